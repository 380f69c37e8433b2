#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A short sound that users can put into their videos. Does not change once made.
class KELO_API SoundboardSound final : public Archivable {
public:
    /// A text that is not a URL makes `soundUrl` an empty one.
    SoundboardSound(std::string name, std::string soundId, std::string_view soundUrl, bool featured,
                    std::optional<std::string> sourcePostId = std::nullopt)
        : _name(std::move(name))
        , _soundId(std::move(soundId))
        , _soundUrl(URL::parse(soundUrl).value_or(URL::empty()))
        , _sourcePostId(std::move(sourcePostId))
        , _featured(featured) {}

    /// "name".
    const std::string& name() const { return _name; }
    /// "soundId", sent as text or as a number.
    const std::string& soundId() const { return _soundId; }
    /// "soundUrl"; empty where that is missing or not a URL.
    const URL& soundUrl() const { return _soundUrl; }
    /// "sourcePostId": the post that the sound was taken from, sent as text or as a number.
    const std::optional<std::string>& sourcePostId() const { return _sourcePostId; }
    /// "featured".
    bool featured() const { return _featured; }

    /// Its name in an archive.
    static constexpr std::string_view archivedClassName = "SoundboardSound";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Null unless the address, the identifier and the name are there.
    static std::shared_ptr<SoundboardSound> initWithCoder(KeyedUnarchiver& coder);

private:
    std::string _name;
    std::string _soundId;
    URL _soundUrl;
    std::optional<std::string> _sourcePostId;
    bool _featured;
};

/// Needs "soundId" (`InsufficientData`); every other key has a default.
class KELO_API SoundboardSoundParser final : public JsonParser<SoundboardSound> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<SoundboardSound> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
