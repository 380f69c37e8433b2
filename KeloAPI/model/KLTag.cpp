#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

namespace {

std::string withHash(const std::string& name) {
    return name.starts_with('#') ? name : "#" + name;
}

} // namespace

KLTag::KLTag(std::string identifier, const std::string& tagName)
    : tagId(std::move(identifier))
    , name(withHash(tagName)) {}

std::string KLTag::nameWithoutHash() const {
    return name.starts_with('#') ? name.substr(1) : name;
}

void KLTag::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText(tagId, "tagId");
    coder.encodeText(name, "name");
}

std::shared_ptr<KLTag> KLTag::initWithCoder(KeyedUnarchiver& coder) {
    return std::shared_ptr<KLTag>(new KLTag(AsKept(), coder.decodeText("tagId").value_or(""),
                                            coder.decodeText("name").value_or("")));
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
