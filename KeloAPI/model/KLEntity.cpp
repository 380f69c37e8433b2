#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/base/internal/UTF16.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <algorithm>

namespace KeloAPI {

namespace {

constexpr std::string_view separator = " | ";

/// Whether the code point that begins with this byte lies outside the basic plane.
bool needsSurrogates(char byte) {
    return static_cast<unsigned char>(byte) >= 0xF0U;
}

struct Offsets {
    std::int64_t start;
    std::int64_t end;
};

Offsets offsetsOf(const JsonValue& value) {
    const auto list = value.array();
    if (list && list->size() == 2) {
        auto at = list->begin();
        const auto start = (*at).integer();
        const auto end = (*++at).integer();
        if (start && end) {
            return {*start, *end};
        }
    }
    throw JsonParseError(JsonParseError::InsufficientData, "range");
}

std::string linkOf(const JsonValue& value) {
    std::string link(value.text().value_or(""));
    return link.empty() ? link : std::string(separator) + link;
}

} // namespace

std::string KLEntity::applicationLink() const {
    std::string result = link;
    if (const auto at = result.find(separator); at != std::string::npos) {
        result.erase(at, separator.size());
    }
    return result;
}

bool operator==(const KLEntity& a, const KLEntity& b) {
    return a.idString == b.idString && a.type == b.type && a.title == b.title;
}

void KLEntity::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText(idString, "idString");
    coder.encodeText(type, "type");
    coder.encodeText(title, "title");
    coder.encodeText(link, "link");
    coder.encodeRange(range, "range");
}

std::shared_ptr<KLEntity> KLEntity::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<KLEntity>(coder.decodeText("idString"), coder.decodeText("type"),
                                      coder.decodeText("title").value_or(""),
                                      coder.decodeText("link").value_or(""),
                                      coder.decodeRange("range").value_or(Range()));
}

KLEntityParser::KLEntityParser(std::string_view text) {
    for (const char byte : text) {
        if (continuesCharacter(byte)) {
            continue;
        }
        if (needsSurrogates(byte)) {
            _pairs.push_back(_codePoints);
        }
        ++_codePoints;
    }
}

std::int64_t KLEntityParser::utf16Offset(std::int64_t codePoints) const {
    const auto pairsBefore =
        std::lower_bound(_pairs.begin(), _pairs.end(), codePoints) - _pairs.begin();
    return codePoints + pairsBefore;
}

std::shared_ptr<KLEntity> KLEntityParser::parse(const JsonObject& json) const {
    const auto [range, title, type, link, id] = json.values("range", "title", "type", "link", "id");
    const auto [start, end] = offsetsOf(range);
    if (start < 0 || end < start || end > _codePoints) {
        throw JsonParseError(JsonParseError::InvalidData, "range");
    }
    const std::int64_t location = utf16Offset(start);
    return std::make_shared<KLEntity>(parseId(id), textOf(type), textOf(title).value_or(""),
                                      linkOf(link), Range{location, utf16Offset(end) - location});
}

} // namespace KeloAPI
