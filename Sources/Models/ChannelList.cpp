#include "Models/ChannelList.h"

#include <simdjson.h>
#include <QJsonArray>
#include <QJsonDocument>
#include <iterator>

#include "Models/EntityDecoding.h"

namespace LumoraSDK {

namespace {

namespace dom = simdjson::dom;

// QJsonDocument refuses documents nested deeper than about a thousand levels; below half that,
// both readers agree on every text they accept.
constexpr size_t kMaximumDepth = 512;

struct FastObject;

/// A simdjson element seen through QJsonValue's questions, so that the entities decode from it
/// with the same code and the same rules as from a QJsonObject.
struct FastValue {
    dom::element element;

    bool isString() const { return element.is_string(); }
    QString toString() const {
        const std::string_view text = element.get_string().value_unsafe();
        return QString::fromUtf8(text.data(), qsizetype(text.size()));
    }
    bool isDouble() const { return element.is_number(); }
    /// As QJsonValue::toDouble: an integer converts to the nearest double.
    double toDouble() const {
        switch (element.type()) {
            case dom::element_type::INT64:
                return double(element.get_int64().value_unsafe());
            case dom::element_type::UINT64:
                return double(element.get_uint64().value_unsafe());
            default:
                return element.get_double().value_unsafe();
        }
    }
    bool isBool() const { return element.is_bool(); }
    bool toBool() const { return element.get_bool().value_unsafe(); }
    bool isArray() const { return element.is_array(); }
    bool isObject() const { return element.is_object(); }
    FastObject toObject() const;
    auto toArray() const;
};

struct FastObject {
    dom::object object;
};

FastObject FastValue::toObject() const {
    return {element.get_object().value_unsafe()};
}

/// The elements of an array as FastValues.
struct FastArray {
    dom::array array;
    struct Iterator {
        using iterator_category = std::input_iterator_tag;
        using value_type = FastValue;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = FastValue;
        dom::array::iterator at;
        FastValue operator*() const { return {*at}; }
        Iterator& operator++() {
            ++at;
            return *this;
        }
        bool operator==(const Iterator& other) const { return !(at != other.at); }
    };
    size_t size() const { return array.size(); }
    Iterator begin() const { return {array.begin()}; }
    Iterator end() const { return {array.end()}; }
};

auto FastValue::toArray() const {
    return FastArray{element.get_array().value_unsafe()};
}

bool isEmptyObject(const FastObject& object) {
    return object.object.begin() == object.object.end();
}

/// In document order: a later duplicate key overwrites what an earlier one set.
template <typename Visit>
void forEachMember(const FastObject& object, Visit visit) {
    for (const dom::key_value_pair member : object.object) {
        visit(member.key, FastValue{member.value});
    }
}

// A channel from either reader's object.
const auto decodeChannelObject = [](const auto& object) {
    return EntityDecoding::decodeChannel(object);
};

}  // namespace

std::optional<QList<Channel>> decodeChannelListWithQtJson(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray()) {
        return std::nullopt;
    }
    return EntityDecoding::decodeObjects<Channel>(document.array(), decodeChannelObject);
}

std::optional<QList<Channel>> decodeChannelList(const QByteArray& json) {
    dom::parser parser;
    dom::element root;
    // simdjson refuses some texts QJsonDocument reads (a byte-order mark, unpaired surrogate
    // escapes, integers past 64 bits, nesting past kMaximumDepth); those take the slow way.
    if (parser.allocate(size_t(json.size()), kMaximumDepth) != simdjson::SUCCESS ||
        parser.parse(json.constData(), size_t(json.size())).get(root) != simdjson::SUCCESS) {
        return decodeChannelListWithQtJson(json);
    }
    dom::array list;
    if (root.get_array().get(list) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    return EntityDecoding::decodeObjects<Channel>(FastArray{list}, decodeChannelObject);
}

}  // namespace LumoraSDK
