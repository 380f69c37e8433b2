#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

KLTag::KLTag(std::string tagId, std::string name)
    : _tagId(std::move(tagId))
    , _name(std::move(name)) {
    if (!_name.starts_with('#')) {
        _name.insert(0, 1, '#');
    }
}

std::string KLTag::nameWithoutHash() const {
    return _name.starts_with('#') ? _name.substr(1) : _name;
}

void KLTag::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText(_tagId, "tagId");
    coder.encodeText(_name, "name");
}

std::shared_ptr<KLTag> KLTag::initWithCoder(KeyedUnarchiver& coder) {
    auto tag = std::make_shared<KLTag>(coder.decodeText("tagId").value_or(""), std::string());
    tag->_name = coder.decodeText("name").value_or("");
    return tag;
}

std::shared_ptr<KLTag> KLTagParser::parse(const JsonObject& json) const {
    const auto [tagName, tag, tagId, postCount] =
        json.values("tagName", "tag", "tagId", "postCount");
    auto name = required(tagName.text() ? textOf(tagName) : textOf(tag), "tag");
    auto id = required(parseId(tagId), "tagId");
    auto made = std::make_shared<KLTag>(std::move(id), std::move(name));
    made->count = postCount.integer().value_or(0);
    return made;
}

} // namespace KeloAPI
