#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/json/Json.hpp>

namespace KeloAPI {

/// What one post took from another; the raw values are the wire's.
enum class KLPostSourceContentType : std::int64_t {
    Unknown = 0,         ///< Not said, or a value that is not known here.
    Audio = 1,           ///< The sound of the other post.
    Video = 2,           ///< The video of the other post.
    SoundboardAudio = 3, ///< The sound, by way of the soundboard.
};

/// The content type with this raw value; none outside 0 to 3.
constexpr std::optional<KLPostSourceContentType> contentTypeOf(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 3) {
        return std::nullopt;
    }
    return static_cast<KLPostSourceContentType>(rawValue);
}

/// The post whose content another post reuses. One thread at a time.
class KELO_API KLPostSource final : public Object {
public:
    /// "postId", as decimal text.
    const std::string postId;
    const std::string userId; ///< "userId", as decimal text.
    /// "username"; absent when missing or not a text.
    const std::optional<std::string> username;
    /// "description"; absent likewise.
    const std::optional<std::string> caption;
    /// "contentType"; `Unknown` when missing or outside its values.
    const KLPostSourceContentType contentType;
    /// "avatarUrl"; absent when missing or not a URL.
    std::optional<URL> avatarUrl;
    std::optional<URL> thumbnailUrl; ///< "thumbnailUrl"; absent likewise.

    /// Null when "postId" or "userId" is missing or not a number.
    static std::shared_ptr<KLPostSource> fromJSON(const JsonObject& json);

private:
    KLPostSource(std::string post, std::string user, std::optional<std::string> nameOfUser,
                 std::optional<std::string> description, KLPostSourceContentType content)
        : postId(std::move(post))
        , userId(std::move(user))
        , username(std::move(nameOfUser))
        , caption(std::move(description))
        , contentType(content) {}
};

} // namespace KeloAPI
