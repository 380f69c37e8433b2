#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/json/internal/JsonWriter.hpp>

#include <simdjson.h>

#include <cmath>
#include <string_view>
#include <type_traits>
#include <utility>

namespace KeloAPI {

namespace {

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

template <class Value>
std::optional<std::string> jsonOrNone(const Value& value) {
    JsonWriter writer;
    return writer.write(value) ? std::optional(writer.take()) : std::nullopt;
}

} // namespace

std::optional<std::string> jsonText(const ParameterValue& value) {
    return jsonOrNone(value);
}

std::optional<std::string> jsonText(const Parameters& map) {
    return jsonOrNone(map);
}

} // namespace KeloAPI
