#include "service/Encoding.hpp"
#include "service/http/FaultScript.hpp"

#include <limits>

namespace KeloService {
namespace {

using Kind = FaultAction::Kind;

/// The keys of an action. What is missing or wrong throws.
class Keys {
public:
    explicit Keys(const Json& action)
        : action_(action) {}

    [[noreturn]] static void refuse(const std::string& what) {
        throw FaultScriptError("action." + what);
    }
    bool has(const char* key) const { return action_.contains(key); }
    std::int64_t integer(const char* key, std::int64_t lowest, std::int64_t highest) const {
        const Json value = action_.value(key, Json());
        if (!value.is_number_integer() || value < lowest || value > highest) {
            refuse(std::string(key) + " must be an integer from " + std::to_string(lowest) +
                   " to " + std::to_string(highest));
        }
        return value.get<std::int64_t>();
    }
    int statusOr(int otherwise, int lowest = 200, int highest = 599) const {
        return has("status") ? static_cast<int>(integer("status", lowest, highest)) : otherwise;
    }
    std::string text(const char* key) const {
        const Json value = action_.value(key, Json());
        if (!value.is_string()) {
            refuse(std::string(key) + " must be a text");
        }
        return value.get<std::string>();
    }
    std::string textOr(const char* key, const std::string& otherwise) const {
        return has(key) ? text(key) : otherwise;
    }
    std::string bytes() const {
        const auto decoded = decodeBase64(text("base64"));
        if (!decoded) {
            refuse("base64 is no base64 text");
        }
        return *decoded;
    }
    bool isTrue(const char* key) const {
        const Json value = action_.value(key, Json(false));
        if (!value.is_boolean()) {
            refuse(std::string(key) + " must be true or false");
        }
        return value.get<bool>();
    }
    Json any(const char* key) const { return action_.value(key, Json()); }

private:
    const Json& action_;
};

void readPlace(const Keys& keys, FaultAction& fault) {
    constexpr std::int64_t most = std::int64_t{1} << 40;
    if (keys.has("afterBytes")) {
        fault.afterBytes = static_cast<std::uint64_t>(keys.integer("afterBytes", 0, most));
    }
    if (keys.has("afterBodyBytes")) {
        fault.afterBodyBytes = static_cast<std::uint64_t>(keys.integer("afterBodyBytes", 0, most));
    }
    if (fault.kind == Kind::Close && keys.isTrue("abrupt")) {
        fault.kind = Kind::AbruptClose;
    }
}

void readGarbage(const Keys& keys, FaultAction& fault) {
    if (keys.has("base64")) {
        fault.bytes = keys.bytes();
        return;
    }
    const auto count = keys.integer("bytes", 1, 1 << 24);
    for (std::int64_t i = 0; i < count; ++i) {
        fault.bytes += static_cast<char>(0x80 + (i * 37) % 128);
    }
}

void readDelay(const Keys& keys, FaultAction& fault) {
    fault.delay = std::chrono::milliseconds(keys.integer("milliseconds", 0, 600000));
}

void readStatus(const Keys& keys, FaultAction& fault) {
    fault.answer.status = static_cast<int>(keys.integer("status", 200, 599));
    fault.answer.body = keys.textOr("body", "");
    fault.answer.contentType = keys.textOr("contentType", "text/plain");
}

void readBody(const Keys& keys, FaultAction& fault) {
    fault.answer.status = keys.statusOr(200);
    fault.answer.body = keys.has("base64") ? keys.bytes() : keys.text("body");
    fault.answer.contentType = keys.textOr("contentType", "application/json");
}

void readError(const Keys& keys, FaultAction& fault) {
    using Limits = std::numeric_limits<int>;
    const int code = static_cast<int>(keys.integer("code", Limits::min(), Limits::max()));
    const int usual = code == ErrorCode::sessionRequired || code == ErrorCode::sessionExpired ? 401
                      : code == ErrorCode::captchaRequired                                    ? 403
                                                                                              : 400;
    fault.answer =
        errorAnswer({keys.statusOr(usual), keys.textOr("message", "A fault script says so"), code,
                     keys.any("data")});
}

void readRedirect(const Keys& keys, FaultAction& fault) {
    fault.answer.status = keys.statusOr(302, 300, 399);
    fault.answer.headers.emplace_back("Location", keys.text("location"));
}

struct Type {
    const char* name;
    Kind kind;
    void (*read)(const Keys& keys, FaultAction& fault);
};

constexpr Type types[] = {
    {"stall", Kind::Stall, readPlace},        {"reset", Kind::Reset, readPlace},
    {"close", Kind::Close, readPlace},        {"garbage", Kind::Garbage, readGarbage},
    {"delay", Kind::Delay, readDelay},        {"status", Kind::Answer, readStatus},
    {"body", Kind::Answer, readBody},         {"error", Kind::Answer, readError},
    {"redirect", Kind::Answer, readRedirect},
};

} // namespace

FaultAction parseFaultAction(const Json& action) {
    if (!action.is_object()) {
        throw FaultScriptError("action must be an object");
    }
    const Keys keys(action);
    const std::string name = keys.text("type");
    for (const Type& type : types) {
        if (name == type.name) {
            FaultAction fault;
            fault.kind = type.kind;
            type.read(keys, fault);
            return fault;
        }
    }
    Keys::refuse("type " + name + " is not known");
}

} // namespace KeloService
