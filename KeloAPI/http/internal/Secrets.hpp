#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace KeloAPI {

/// What stands in the place of a secret: the same in a URL, a header field and JSON.
inline constexpr std::string_view blankedSecret = "BLANKED";

/// The names under which secrets stand: of header fields, in queries and forms, and in JSON. Beside
/// those that are added, each that speaks of a session, a token, a password and the like.
class SecretNames {
public:
    /// Case counts as little as what is neither a letter nor a digit.
    void add(std::string_view name) { _added.insert(plain(name)); }
    bool contains(std::string_view name) const;
    /// Those that were added, in lower case and without marks.
    const std::set<std::string>& added() const { return _added; }

private:
    static std::string plain(std::string_view name);

    std::set<std::string> _added;
};

/// Hears of each secret that is blanked, as it stood.
using SecretListener = std::function<void(std::string_view secret)>;

/// `text` with the secrets blanked that stand in it as NAME=VALUE, as they do in queries and forms,
/// also in a URL that is a value of another one ("NAME%3DVALUE"), or in front of a host, as
/// USER:PASSWORD@.
std::string withoutSecrets(std::string_view text, const SecretNames& names,
                           const SecretListener& listener = {});

} // namespace KeloAPI
