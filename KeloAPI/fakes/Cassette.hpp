#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/Export.hpp>
#include <KeloAPI/base/Result.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI::fakes {

/// Domain of the errors of cassettes.
inline constexpr std::string_view CassetteErrorDomain = "KeloAPI.Cassette";

/// Codes within `CassetteErrorDomain`. They are stable: new ones are added at the end.
enum class CassetteErrorCode : std::int8_t {
    /// The file cannot be read or written; the underlying error says why.
    File = 1,
    /// The file is not a cassette, or one of a later version; the message says where it is wrong.
    Format = 2,
    /// A request that the cassette does not have, or not at this place.
    UnexpectedRequest = 3,
    /// The response's body was too long to be kept.
    BodyNotKept = 4,
};

/// Exchanges with a service, recorded by a `RecordingTransport`, kept in a file, and played back by
/// a `PlaybackTransport`. The file is JSON that can be read and compared line by line: JSON bodies
/// as JSON, texts as texts, all else in base64.
///
/// Secrets never get into a cassette: "BLANKED" stands in their place, and 0 for a number. Secret
/// is
/// - what stands under a name that speaks of a session, a token, a key, a password and the like, in
///   header fields (cookies among them), queries, forms and JSON; and under the names that are
///   added;
/// - a user with a password in a URL, and a user's name or address in the body of a request;
/// - the same values wherever else they stand (in a path, an error's text, a binary body), as they
///   are or percent-encoded, in base64 or escaped, if they have 8 characters or more and not only
///   letters.
/// A part of a path is known to be secret only if it has stood under such a name. A body that is
/// too long to be kept is not searched: what stands in it alone is not blanked elsewhere.
///
/// Usable from any thread.
class KELO_API Cassette {
public:
    /// An empty one. Of bodies with more than `maxBodyBytes`, in a request or a response, it keeps
    /// only the length and a hash: such a response cannot be played back.
    explicit Cassette(std::size_t maxBodyBytes = std::size_t{1} << 20U);
    Cassette(const Cassette&) = delete;
    Cassette& operator=(const Cassette&) = delete;
    ~Cassette();

    /// Reads a file. What is recorded afterwards comes behind what is in it.
    static Result<std::shared_ptr<Cassette>> load(const std::string& path);
    /// Reads the text of a file.
    static Result<std::shared_ptr<Cassette>> parse(const std::string& text);

    /// Writes a file, over one that is there. Exchanges that are still under way are left out.
    /// Absent where all went well.
    std::optional<Error> save(const std::string& path) const;
    /// The text of that file.
    std::string text() const;

    /// Blanks what stands under this name from now on, in recording and in playback. Only letters
    /// and digits of the name count, in either case. The file keeps the name.
    void addSecretName(std::string_view name);

    /// How many exchanges are over.
    std::size_t size() const;

private:
    friend class PlaybackTransport;
    friend class RecordingTransport;
    struct Contents;
    const std::unique_ptr<Contents> _contents;
};

} // namespace KeloAPI::fakes
