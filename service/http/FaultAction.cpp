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
    int status(int lowest, int highest) const {
        return static_cast<int>(integer("status", lowest, highest));
    }
    int statusOr(int otherwise, int lowest = 200) const {
        return has("status") ? status(lowest, lowest == 200 ? 599 : 399) : otherwise;
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

FaultAction wireFault(const Keys& keys, Kind kind) {
    constexpr std::int64_t most = std::int64_t{1} << 40;
    FaultAction fault;
    fault.kind = kind;
    if (keys.has("afterBytes")) {
        fault.afterBytes = static_cast<std::uint64_t>(keys.integer("afterBytes", 0, most));
    }
    if (keys.has("afterBodyBytes")) {
        fault.afterBodyBytes = static_cast<std::uint64_t>(keys.integer("afterBodyBytes", 0, most));
    }
    return fault;
}

FaultAction closeFault(const Keys& keys) {
    return wireFault(keys, keys.isTrue("abrupt") ? Kind::AbruptClose : Kind::Close);
}

FaultAction garbageFault(const Keys& keys) {
    FaultAction fault;
    fault.kind = Kind::Garbage;
    if (keys.has("base64")) {
        fault.bytes = keys.bytes();
        return fault;
    }
    const auto count = keys.integer("bytes", 1, 1 << 24);
    for (std::int64_t i = 0; i < count; ++i) {
        fault.bytes += static_cast<char>(0x80 + (i * 37) % 128);
    }
    return fault;
}

Answer statusAnswer(const Keys& keys) {
    Answer answer;
    answer.status = keys.status(200, 599);
    answer.body = keys.textOr("body", "");
    answer.contentType = keys.textOr("contentType", "text/plain");
    return answer;
}

Answer bodyAnswer(const Keys& keys) {
    Answer answer;
    answer.status = keys.statusOr(200);
    answer.body = keys.has("base64") ? keys.bytes() : keys.text("body");
    answer.contentType = keys.textOr("contentType", "application/json");
    return answer;
}

Answer envelopeAnswer(const Keys& keys) {
    using Limits = std::numeric_limits<int>;
    const int code = static_cast<int>(keys.integer("code", Limits::min(), Limits::max()));
    const int usual = code == ErrorCode::sessionRequired || code == ErrorCode::sessionExpired ? 401
                      : code == ErrorCode::captchaRequired                                    ? 403
                                                                                              : 400;
    return errorAnswer(ServiceError(keys.statusOr(usual),
                                    keys.textOr("message", "A fault script says so"), code,
                                    keys.any("data")));
}

Answer redirectAnswer(const Keys& keys) {
    Answer answer;
    answer.status = keys.statusOr(302, 300);
    answer.headers.emplace_back("Location", keys.text("location"));
    return answer;
}

FaultAction delayFault(const Keys& keys) {
    FaultAction fault;
    fault.kind = Kind::Delay;
    fault.delay = std::chrono::milliseconds(keys.integer("milliseconds", 0, 600000));
    return fault;
}

struct Type {
    const char* name;
    FaultAction (*parse)(const Keys& keys);
};

template <Answer (*make)(const Keys&)>
FaultAction answering(const Keys& keys) {
    FaultAction fault;
    fault.kind = Kind::Answer;
    fault.answer = make(keys);
    return fault;
}

constexpr Type types[] = {
    {"stall", [](const Keys& keys) { return wireFault(keys, Kind::Stall); }},
    {"reset", [](const Keys& keys) { return wireFault(keys, Kind::Reset); }},
    {"close", closeFault},
    {"garbage", garbageFault},
    {"status", answering<statusAnswer>},
    {"body", answering<bodyAnswer>},
    {"error", answering<envelopeAnswer>},
    {"redirect", answering<redirectAnswer>},
    {"delay", delayFault},
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
            return type.parse(keys);
        }
    }
    Keys::refuse("type " + name + " is not known");
}

} // namespace KeloService
