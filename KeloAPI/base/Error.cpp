#include <KeloAPI/base/Error.hpp>

namespace KeloAPI {

namespace {

/// The value under a key where it is of this type; null otherwise.
template <class T>
const T* held(const Error::UserInfo& info, std::string_view key) {
    const auto found = info.find(key);
    return found == info.end() ? nullptr : std::get_if<T>(&found->second);
}

} // namespace

struct Error::Contents {
    std::string domain;
    std::int64_t code;
    UserInfo userInfo;
    std::optional<Error> underlying;
};

Error::Error(std::string_view domain, std::int64_t code, UserInfo userInfo,
             std::optional<Error> underlying)
    : _contents(std::make_shared<const Contents>(
          Contents{std::string(domain), code, std::move(userInfo), std::move(underlying)})) {}

Error Error::withMessage(std::string_view domain, std::int64_t code, std::string message,
                         std::optional<Error> underlying) {
    UserInfo info;
    info.emplace(NSLocalizedDescriptionKey, std::move(message));
    return {domain, code, std::move(info), std::move(underlying)};
}

const std::string& Error::domain() const {
    return _contents->domain;
}

std::int64_t Error::code() const {
    return _contents->code;
}

const Error::UserInfo& Error::userInfo() const {
    return _contents->userInfo;
}

std::string Error::localizedDescription() const {
    const auto* message = held<std::string>(userInfo(), NSLocalizedDescriptionKey);
    return message != nullptr ? *message : domain() + " error " + std::to_string(code());
}

std::optional<std::int64_t> Error::integer(std::string_view key) const {
    const auto* number = held<Number>(userInfo(), key);
    return number != nullptr ? std::optional(number->int64Value()) : std::nullopt;
}

std::optional<URL> Error::url(std::string_view key) const {
    const auto* url = held<URL>(userInfo(), key);
    return url != nullptr ? std::optional(*url) : std::nullopt;
}

const std::optional<Error>& Error::underlying() const {
    return _contents->underlying;
}

std::string Error::description() const {
    std::string text = domain() + " " + std::to_string(code()) + ": " + localizedDescription();
    if (underlying()) {
        text += " (" + underlying()->description() + ")";
    }
    return text;
}

bool operator==(const Error& a, const Error& b) {
    return a._contents == b._contents ||
           (a.domain() == b.domain() && a.code() == b.code() && a.userInfo() == b.userInfo());
}

} // namespace KeloAPI
