#pragma once

#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace KeloAPI {

/// The user-info key of an error's human-readable message.
inline constexpr std::string_view NSLocalizedDescriptionKey = "NSLocalizedDescription";

/// An error as a value: a domain, a code within that domain, and a map of further facts. Copies
/// share their contents. Two errors are equal when domain, code and user info are.
class KELO_API Error {
public:
    using Value = std::variant<Number, std::string, URL>; ///< A further fact.
    /// Facts by name. No key is always there.
    using UserInfo = std::map<std::string, Value, std::less<>>;

    /// Stores everything as given.
    Error(std::string_view domain, std::int64_t code, UserInfo userInfo = {},
          std::optional<Error> underlying = {});

    /// An error whose user info is a message under `NSLocalizedDescriptionKey` alone.
    static Error withMessage(std::string_view domain, std::int64_t code, std::string message,
                             std::optional<Error> underlying = {});

    const std::string& domain() const; ///< Whose codes these are; see the page on errors.
    std::int64_t code() const;         ///< What happened; unique within the domain.
    const UserInfo& userInfo() const;  ///< Further facts; empty for many.

    /// The message under `NSLocalizedDescriptionKey`, or a text made of domain and code.
    std::string localizedDescription() const;
    /// The integer under `key`; absent when there is none or it is not a number.
    std::optional<std::int64_t> integer(std::string_view key) const;
    /// The URL under `key`; absent when there is none.
    std::optional<URL> url(std::string_view key) const;

    /// What lies behind this error, for people who debug; absent for most. It plays no part in
    /// equality.
    const std::optional<Error>& underlying() const;

    /// One line with domain, code, message and what lies behind it.
    std::string description() const;

    /// Domain, code and user info are equal.
    KELO_API friend bool operator==(const Error& a, const Error& b);

private:
    struct Contents;
    std::shared_ptr<const Contents> _contents;
};

} // namespace KeloAPI
