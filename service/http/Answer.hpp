#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace KeloService {

using Json = nlohmann::ordered_json;

/// A body that is read as it is sent.
struct AnswerStream {
    std::uint64_t bytes = 0;
    /// Up to so many bytes from there on; empty when they cannot be read.
    std::function<std::string(std::uint64_t offset, std::size_t count)> read;
};

/// One HTTP answer, before the engine adds what HTTP itself needs.
struct Answer {
    int status = 200;
    std::string contentType = "application/json";
    std::string body;
    /// In place of `body`, and sent no faster than the rate that is set for media.
    std::optional<AnswerStream> stream;
    std::vector<std::pair<std::string, std::string>> headers;
};

/// Codes in the envelope's "code" key that are no HTTP statuses.
namespace ErrorCode {
inline constexpr int sessionRequired = 100;
inline constexpr int wrongCredentials = 101;
inline constexpr int sessionExpired = 103;
inline constexpr int alreadyFollowing = 230;
inline constexpr int notFollowing = 231;
inline constexpr int captchaRequired = 419;
} // namespace ErrorCode

/// What a route throws to answer with an error envelope.
class ServiceError : public std::runtime_error {
public:
    /// The HTTP status is the envelope's code, too.
    ServiceError(int httpStatus, const std::string& message)
        : ServiceError(httpStatus, message, httpStatus) {}
    /// `errorData` becomes the envelope's "data" unless it is null.
    ServiceError(int httpStatus, const std::string& message, int errorCode,
                 Json errorData = nullptr)
        : std::runtime_error(message)
        , status(httpStatus)
        , code(errorCode)
        , data(std::move(errorData)) {}

    int status;
    int code;
    Json data;
};

/// A JSON document as it is, without the envelope.
Answer jsonAnswer(const Json& document = Json::object(), int status = 200);
/// {"data": data}
Answer dataAnswer(const Json& data = Json::object());
/// {"error": ..., "code": ..., "data": ...}
Answer errorAnswer(const ServiceError& error);

} // namespace KeloService
