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
    /// In place of `body`.
    std::optional<AnswerStream> stream;
    std::vector<std::pair<std::string, std::string>> headers;
    /// Whether the rate that is set for media holds for this answer.
    bool atMediaRate = false;
};

/// Codes in the envelope's "code" key.
namespace ErrorCode {
inline constexpr int sessionRequired = 100;
inline constexpr int wrongCredentials = 101;
inline constexpr int sessionExpired = 103;
inline constexpr int alreadyFollowing = 230;
inline constexpr int notFollowing = 231;
inline constexpr int badRequest = 400;
inline constexpr int notFound = 404;
inline constexpr int methodNotAllowed = 405;
inline constexpr int conflict = 409;
inline constexpr int gone = 410;
inline constexpr int rangeNotSatisfiable = 416;
inline constexpr int captchaRequired = 419;
inline constexpr int internal = 500;
} // namespace ErrorCode

/// What a route throws to answer with an error envelope.
class ServiceError : public std::runtime_error {
public:
    /// `data` becomes the envelope's "data" unless it is null.
    ServiceError(int httpStatus, int errorCode, const std::string& message,
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
Answer jsonAnswer(const Json& document, int status = 200);
/// {"data": data}
Answer dataAnswer(const Json& data, int status = 200);
/// {"error": ..., "code": ..., "data": ...}
Answer errorAnswer(const ServiceError& error);

} // namespace KeloService
