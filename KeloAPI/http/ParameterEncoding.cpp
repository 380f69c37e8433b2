#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/ParameterEncoding.hpp>

#include <simdjson.h>

#include <cmath>
#include <string_view>

namespace KeloAPI {

namespace {

/// Writes name=value pairs, one call for each value of the parameters' tree.
class QueryWriter {
public:
    void write(const std::string& key, const ParameterValue& value) {
        std::visit([&](const auto& held) { write(key, held); }, value.held());
    }

    std::string take() { return std::move(_query); }

private:
    void pair(std::string_view key, std::string_view value) {
        if (!_query.empty()) {
            _query += '&';
        }
        _query += percentEncoded(key);
        _query += '=';
        _query += percentEncoded(value);
    }

    void write(const std::string& key, std::nullptr_t) { pair(key, "<null>"); }
    void write(const std::string& key, const std::string& text) { pair(key, text); }
    template <class Value>
    requires std::is_arithmetic_v<Value>
    void write(const std::string& key, Value value) { pair(key, Number::of(value).stringValue()); }
    void write(const std::string& key, const ParameterList& list) {
        for (const ParameterValue& element : list) {
            write(key + "[]", element);
        }
    }
    void write(const std::string& key, const Parameters& map) {
        for (const auto& [name, element] : map) {
            std::string member = key;
            write(member.append("[").append(name).append("]"), element);
        }
    }

    std::string _query;
};

class JsonWriter {
public:
    /// False when a value has no JSON form.
    bool write(const ParameterValue& value) {
        return std::visit([&](const auto& held) { return write(held); }, value.held());
    }

    bool write(const Parameters& map) {
        _json += '{';
        bool first = true;
        for (const auto& [name, element] : map) {
            separate(first);
            if (!write(name)) {
                return false;
            }
            _json += ':';
            if (!write(element)) {
                return false;
            }
        }
        _json += '}';
        return true;
    }

    std::string take() { return std::move(_json); }

private:
    bool write(std::nullptr_t) {
        _json += "null";
        return true;
    }
    bool write(bool value) {
        _json += value ? "true" : "false";
        return true;
    }
    /// Large doubles with an exponent: as a mere run of digits they would be integers to a reader,
    /// and beyond 64 bits.
    template <class Value>
    requires std::is_arithmetic_v<Value>
    bool write(Value value) {
        _json += Number::of(value).stringValue();
        return std::isfinite(static_cast<double>(value));
    }
    bool write(const std::string& text) {
        if (!simdjson::validate_utf8(text)) {
            return false;
        }
        _json += '"';
        for (const char c : text) {
            escape(c);
        }
        _json += '"';
        return true;
    }
    bool write(const ParameterList& list) {
        _json += '[';
        bool first = true;
        for (const ParameterValue& element : list) {
            separate(first);
            if (!write(element)) {
                return false;
            }
        }
        _json += ']';
        return true;
    }

    void separate(bool& first) {
        if (!first) {
            _json += ',';
        }
        first = false;
    }

    void escape(char c) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            _json += '\\';
            _json += c;
        } else if (byte < 0x20) {
            _json += "\\u00";
            _json += digits[byte >> 4U];
            _json += digits[byte & 15U];
        } else {
            _json += c;
        }
    }

    std::string _json;
};

} // namespace

std::string queryString(const Parameters& parameters) {
    QueryWriter writer;
    for (const auto& [key, value] : parameters) {
        writer.write(key, value);
    }
    return writer.take();
}

namespace detail {

std::optional<Error> encodeIntoQuery(URLRequest& request, const Parameters& parameters) {
    if (request.url && !parameters.empty()) {
        request.url = request.url->appendingQuery(queryString(parameters));
    }
    return std::nullopt;
}

std::optional<Error> encodeIntoBody(URLRequest& request, const Parameters& parameters) {
    JsonWriter writer;
    if (!writer.write(parameters)) {
        return httpError(HTTPErrorCode::ParameterEncoding, "a parameter has no JSON form");
    }
    request.headerFields.try_emplace("Content-Type", "application/json");
    request.body = Data(writer.take());
    return std::nullopt;
}

} // namespace detail

} // namespace KeloAPI
