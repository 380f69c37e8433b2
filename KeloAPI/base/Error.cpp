#include <KeloAPI/base/Error.hpp>

namespace KeloAPI {

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
    const auto found = userInfo().find(NSLocalizedDescriptionKey);
    if (found != userInfo().end()) {
        if (const auto* message = std::get_if<std::string>(&found->second)) {
            return *message;
        }
    }
    return domain() + " error " + std::to_string(code());
}

std::optional<std::int64_t> Error::integer(std::string_view key) const {
    const auto found = userInfo().find(key);
    if (found != userInfo().end()) {
        if (const auto* number = std::get_if<Number>(&found->second)) {
            return number->int64Value();
        }
    }
    return std::nullopt;
}

std::optional<URL> Error::url(std::string_view key) const {
    const auto found = userInfo().find(key);
    if (found != userInfo().end()) {
        if (const auto* url = std::get_if<URL>(&found->second)) {
            return *url;
        }
    }
    return std::nullopt;
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
