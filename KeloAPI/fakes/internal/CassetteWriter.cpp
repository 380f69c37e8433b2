#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/fakes/internal/CassetteFile.hpp>
#include <KeloAPI/json/internal/JsonWriter.hpp>
#include <KeloAPI/json/Json.hpp>

#include <algorithm>
#include <utility>

namespace KeloAPI::fakes {

namespace {

/// A text in quotes. Bytes that are not UTF-8 become U+FFFD.
std::string jsonString(std::string_view text) {
    if (auto json = jsonText(ParameterValue(text))) {
        return *std::move(json);
    }
    std::string readable;
    for (const char c : text) {
        readable +=
            (static_cast<unsigned char>(c) & 0x80U) != 0 ? "\xEF\xBF\xBD" : std::string(1, c);
    }
    return jsonText(ParameterValue(readable)).value_or("\"\"");
}

/// Composes a list or an object of what is JSON already.
class JsonComposer {
public:
    explicit JsonComposer(char open)
        : _json(1, open) {}

    void add(std::string_view json) { _json.append(_json.size() > 1 ? "," : "").append(json); }
    void add(std::string_view name, std::string_view json) {
        add(jsonString(name).append(":").append(json));
    }
    void addText(std::string_view name, std::string_view text) { add(name, jsonString(text)); }

    std::string make() && { return std::move(_json += _json.front() == '{' ? '}' : ']'); }

private:
    std::string _json;
};

/// True for JSON that comes out of the reader as it went in, byte for byte, also where it stands as
/// deep as a cassette has it.
bool isKeptByReader(const std::string& json) {
    if (json.empty() || (json.front() != '{' && json.front() != '[')) {
        return false;
    }
    constexpr std::size_t depth = 8;
    const std::string inside = std::string(depth, '[') + json + std::string(depth, ']');
    const auto document = JsonDocument::parse(inside);
    return document && document.value().root().description() == inside;
}

void addBody(JsonComposer& message, const RecordedBody& body) {
    if (body.tooLong) {
        JsonComposer tooLong('{');
        tooLong.add("bytes", std::to_string(body.tooLong->size));
        tooLong.addText("hash", std::to_string(body.tooLong->hash));
        message.add("tooLong", std::move(tooLong).make());
    } else if (isKeptByReader(body.bytes)) {
        message.add("json", body.bytes);
    } else if (const auto text = jsonText(ParameterValue(body.bytes))) {
        if (!body.bytes.empty()) {
            message.add("text", *text);
        }
    } else {
        message.addText("base64", base64Encoded(body.bytes));
    }
}

void addFields(JsonComposer& message, const HeaderFields& fields) {
    JsonComposer members('{');
    for (const auto& [name, value] : fields) {
        members.addText(name, value);
    }
    message.add("headerFields", std::move(members).make());
}

std::string jsonOf(const RecordedRequest& request) {
    JsonComposer members('{');
    members.addText("method", name(request.method));
    members.addText("url", request.url);
    addFields(members, request.headerFields);
    addBody(members, request.body);
    return std::move(members).make();
}

std::string jsonOf(const RecordedResponse& response, const RecordedRequest& request) {
    JsonComposer members('{');
    members.add("status", std::to_string(response.statusCode));
    if (response.url != request.url) {
        members.addText("url", response.url);
    }
    addFields(members, response.headerFields);
    if (response.expectedContentLength) {
        members.add("expectedContentLength", std::to_string(*response.expectedContentLength));
    }
    addBody(members, response.body);
    return std::move(members).make();
}

std::string jsonOf(const Error& error) {
    JsonComposer members('{');
    members.addText("domain", error.domain());
    members.add("code", std::to_string(error.code()));
    members.addText("message", error.localizedDescription());
    return std::move(members).make();
}

std::string jsonOf(const RecordedExchange& exchange) {
    JsonComposer members('{');
    members.add("request", jsonOf(exchange.request));
    if (exchange.response) {
        members.add("response", jsonOf(*exchange.response, exchange.request));
    }
    if (exchange.error) {
        members.add("error", jsonOf(*exchange.error));
    }
    return std::move(members).make();
}

/// Compact JSON with a line for each member and element.
class LineWriter {
public:
    std::string write(std::string_view json) {
        for (std::size_t at = 0; at < json.size(); ++at) {
            const char c = json[at];
            if (c == '"') {
                const std::size_t end = endOfText(json, at);
                _lines += json.substr(at, end - at);
                at = end - 1;
            } else {
                putMark(c);
            }
        }
        return std::move(_lines += '\n');
    }

private:
    static std::size_t endOfText(std::string_view json, std::size_t at) {
        for (++at; json[at] != '"'; ++at) {
            at += json[at] == '\\' ? 1U : 0U;
        }
        return at + 1;
    }

    void putMark(char c) {
        const bool isOpening = c == '{' || c == '[';
        if (c == '}' || c == ']') {
            --_depth;
            if (_lines.back() == '\n' || _lines.back() == ' ') {
                // behind what was opened
                _lines.erase(_lines.find_last_not_of(" \n") + 1);
            } else {
                beginLine();
            }
        }
        _lines += c;
        _depth += isOpening ? 1 : 0;
        if (isOpening || c == ',') {
            beginLine();
        } else if (c == ':') {
            _lines += ' ';
        }
    }

    void beginLine() { _lines.append("\n").append(2 * _depth, ' '); }

    std::string _lines;
    std::size_t _depth = 0;
};

} // namespace

std::string cassetteText(const CassetteFile& file) {
    JsonComposer names('[');
    for (const std::string& name : file.secretNames.added()) {
        names.add(jsonString(name));
    }
    JsonComposer exchanges('[');
    for (const RecordedExchange& exchange : file.exchanges) {
        exchanges.add(jsonOf(exchange));
    }
    JsonComposer root('{');
    root.add("cassetteVersion", std::to_string(cassetteVersion));
    root.add("secretNames", std::move(names).make());
    root.add("maxBodyBytes", std::to_string(file.maxBodyBytes));
    root.add("exchanges", std::move(exchanges).make());
    return LineWriter().write(std::move(root).make());
}

} // namespace KeloAPI::fakes
