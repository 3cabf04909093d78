#pragma once

#include <QColor>
#include <QString>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The colour that a hex text such as "#F5C92C" names, with the given alpha.
///
/// Leading "#" characters are skipped, then one hexadecimal integer is read up to the first
/// character that is not a hex digit (an optional "0x" prefix is allowed; a value too large for
/// 64 bits saturates). Its low 24 bits are red, green and blue, so "c5c5c5" equals "#c5c5c5" and
/// an eight-digit text keeps its last six digits. A text with nothing readable is black; no error
/// is reported.
LUMORASDK_EXPORT QColor colorFromHexString(const QString& hexString, double alpha = 1.0);

/// "#rrggbb" in lower case: each component fraction times 255, truncated toward zero. Alpha is
/// dropped.
LUMORASDK_EXPORT QString toHexString(const QColor& color);

}  // namespace LumoraSDK
