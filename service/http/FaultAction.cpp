#include "service/http/FaultAction.hpp"

#include "service/http/Base64.hpp"

#include <array>
#include <string_view>

namespace KeloService {
namespace {

[[noreturn]] void refuse(const std::string& what) {
    throw FaultScriptError("action." + what);
}

std::int64_t integer(const Json& action, const char* key, std::int64_t lowest,
                     std::int64_t highest) {
    const auto found = action.find(key);
    if (found == action.end() || !found->is_number_integer() || *found < lowest ||
        *found > highest) {
        refuse(std::string(key) + " must be an integer from " + std::to_string(lowest) + " to " +
               std::to_string(highest));
    }
    return found->get<std::int64_t>();
}

std::int64_t integerOr(const Json& action, const char* key, std::int64_t otherwise,
                       std::int64_t lowest, std::int64_t highest) {
    return action.contains(key) ? integer(action, key, lowest, highest) : otherwise;
}

std::string text(const Json& action, const char* key) {
    const auto found = action.find(key);
    if (found == action.end() || !found->is_string()) {
        refuse(std::string(key) + " must be a text");
    }
    return found->get<std::string>();
}

std::string textOr(const Json& action, const char* key, const std::string& otherwise) {
    return action.contains(key) ? text(action, key) : otherwise;
}

std::string bytes(const Json& action) {
    const auto decoded = decodeBase64(text(action, "base64"));
    if (!decoded) {
        refuse("base64 is no base64 text");
    }
    return *decoded;
}

int status(const Json& action, int otherwise) {
    return static_cast<int>(integerOr(action, "status", otherwise, 200, 599));
}

WireFault wireFault(const Json& action, WireFault::Kind kind) {
    constexpr std::int64_t most = std::int64_t{1} << 40;
    WireFault fault;
    fault.kind = kind;
    fault.afterBytes = static_cast<std::uint64_t>(integerOr(action, "afterBytes", 0, 0, most));
    if (action.contains("afterBodyBytes")) {
        fault.afterBodyBytes =
            static_cast<std::uint64_t>(integer(action, "afterBodyBytes", 0, most));
    }
    return fault;
}

WireFault closeFault(const Json& action) {
    const auto abrupt = action.find("abrupt");
    if (abrupt != action.end() && !abrupt->is_boolean()) {
        refuse("abrupt must be true or false");
    }
    return wireFault(action, abrupt != action.end() && abrupt->get<bool>()
                                 ? WireFault::Kind::AbruptClose
                                 : WireFault::Kind::Close);
}

WireFault garbageFault(const Json& action) {
    WireFault fault;
    fault.kind = WireFault::Kind::Garbage;
    if (action.contains("base64")) {
        fault.bytes = bytes(action);
        return fault;
    }
    const auto count = integer(action, "bytes", 1, 1 << 24);
    for (std::int64_t i = 0; i < count; ++i) {
        fault.bytes += static_cast<char>(0x80 + (i * 37) % 128);
    }
    return fault;
}

AnswerFault statusFault(const Json& action) {
    Answer answer;
    answer.status = static_cast<int>(integer(action, "status", 200, 599));
    answer.body = textOr(action, "body", "");
    answer.contentType = textOr(action, "contentType", "text/plain");
    return {answer};
}

AnswerFault bodyFault(const Json& action) {
    Answer answer;
    answer.status = status(action, 200);
    answer.body = action.contains("base64") ? bytes(action) : text(action, "body");
    answer.contentType = textOr(action, "contentType", "application/json");
    return {answer};
}

AnswerFault errorFault(const Json& action) {
    const int code = static_cast<int>(integer(action, "code", INT32_MIN, INT32_MAX));
    const int usual = code == ErrorCode::sessionRequired || code == ErrorCode::sessionExpired ? 401
                      : code == ErrorCode::captchaRequired                                    ? 403
                                                                                              : 400;
    const Json data = action.contains("data") ? action.at("data") : Json(nullptr);
    return {errorAnswer(ServiceError(status(action, usual), code,
                                     textOr(action, "message", "A fault script says so"), data))};
}

AnswerFault redirectFault(const Json& action) {
    Answer answer;
    answer.status = static_cast<int>(integerOr(action, "status", 302, 300, 399));
    answer.headers.emplace_back("Location", text(action, "location"));
    return {answer};
}

} // namespace

FaultAction parseFaultAction(const Json& action) {
    if (!action.is_object()) {
        throw FaultScriptError("action must be an object");
    }
    const std::string type = text(action, "type");
    if (type == "stall") {
        return wireFault(action, WireFault::Kind::Stall);
    }
    if (type == "reset") {
        return wireFault(action, WireFault::Kind::Reset);
    }
    if (type == "close") {
        return closeFault(action);
    }
    if (type == "garbage") {
        return garbageFault(action);
    }
    if (type == "status") {
        return statusFault(action);
    }
    if (type == "body") {
        return bodyFault(action);
    }
    if (type == "error") {
        return errorFault(action);
    }
    if (type == "redirect") {
        return redirectFault(action);
    }
    if (type == "delay") {
        return DelayFault{std::chrono::milliseconds(integer(action, "milliseconds", 0, 600000))};
    }
    refuse("type " + type + " is not known");
}

} // namespace KeloService
