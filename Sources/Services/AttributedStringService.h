#pragma once

#include <QTextBlockFormat>
#include <QTextDocument>
#include <memory>
#include <optional>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Holds a piece of styled text while a screen builds it: the text with its character formats,
/// and the paragraph style it is laid out with.
class LUMORASDK_EXPORT AttributedStringService {
public:
    AttributedStringService();
    ~AttributedStringService();

    /// The styled text; none until a screen makes one. Shared, so every holder edits one text.
    std::shared_ptr<QTextDocument> attributedString;
    std::optional<QTextBlockFormat> paragraphStyle;
};

}  // namespace LumoraSDK
