#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A short sound that users can put into their videos. Does not change once made.
class KELO_API SoundboardSound final : public Archivable {
public:
    /// A text that is not a URL makes `soundUrl` an empty one.
    SoundboardSound(std::string title, std::string identifier, std::string_view url,
                    bool isFeatured, std::optional<std::string> sourcePost = std::nullopt)
        : name(std::move(title))
        , soundId(std::move(identifier))
        , soundUrl(URL::parse(url).value_or(URL::empty()))
        , sourcePostId(std::move(sourcePost))
        , featured(isFeatured) {}

    /// "name".
    const std::string name;
    /// "soundId", sent as text or as a number.
    const std::string soundId;
    /// "soundUrl"; empty where that is missing or not a URL.
    const URL soundUrl;
    /// "sourcePostId": the post that the sound was taken from, sent as text or as a number.
    const std::optional<std::string> sourcePostId;
    /// "featured".
    const bool featured;

    /// Its name in an archive.
    static constexpr std::string_view archivedClassName = "SoundboardSound";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Null unless the address, the identifier and the name are there.
    static std::shared_ptr<SoundboardSound> initWithCoder(KeyedUnarchiver& coder);
};

/// Needs "soundId" (`InsufficientData`); every other key has a default.
class KELO_API SoundboardSoundParser final : public JsonParser<SoundboardSound> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<SoundboardSound> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
