#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

void SoundboardSound::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeURL(soundUrl, "soundUrl");
    coder.encodeText(name, "name");
    coder.encodeText(sourcePostId, "sourcePostId");
    coder.encodeText(soundId, "soundId");
    coder.encodeBool(featured, "featured");
}

std::shared_ptr<SoundboardSound> SoundboardSound::initWithCoder(KeyedUnarchiver& coder) {
    const auto soundUrl = coder.decodeURL("soundUrl");
    auto soundId = coder.decodeText("soundId");
    auto name = coder.decodeText("name");
    if (!soundUrl || !soundId || !name) {
        return nullptr;
    }
    return std::make_shared<SoundboardSound>(
        *std::move(name), *std::move(soundId), soundUrl->absoluteString(),
        coder.decodeBool("featured"), coder.decodeText("sourcePostId"));
}

std::shared_ptr<SoundboardSound> SoundboardSoundParser::parse(const JsonObject& json) const {
    const auto [soundId, sourcePostId, name, soundUrl, featured] =
        json.values("soundId", "sourcePostId", "name", "soundUrl", "featured");
    auto id = required(parseId(soundId), "soundId");
    auto source = parseId(sourcePostId);
    if (source && source->empty()) {
        source.reset();
    }
    return std::make_shared<SoundboardSound>(std::string(name.text().value_or("")), std::move(id),
                                             soundUrl.text().value_or(""),
                                             featured.boolean().value_or(false), std::move(source));
}

} // namespace KeloAPI
