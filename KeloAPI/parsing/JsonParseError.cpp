#include <KeloAPI/parsing/JsonParseError.hpp>

#include <string>

namespace KeloAPI {

const char* JsonParseError::what() const noexcept {
    switch (_case) {
    case NotImplemented:
        return "KeloAPI.JsonParseError.NotImplemented";
    case NotInitialized:
        return "KeloAPI.JsonParseError.NotInitialized";
    case IncorrectType:
        return "KeloAPI.JsonParseError.IncorrectType";
    case InsufficientData:
        return "KeloAPI.JsonParseError.InsufficientData";
    case InvalidData:
        return "KeloAPI.JsonParseError.InvalidData";
    }
    return "KeloAPI.JsonParseError";
}

Error JsonParseError::error() const {
    Error::UserInfo info;
    if (_key != nullptr) {
        info.emplace("key", std::string(_key));
    }
    return {domain, code(), std::move(info)};
}

} // namespace KeloAPI
