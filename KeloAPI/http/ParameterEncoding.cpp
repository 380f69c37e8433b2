#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/ParameterEncoding.hpp>
#include <KeloAPI/json/internal/JsonWriter.hpp>

#include <string_view>
#include <type_traits>
#include <utility>

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
    auto json = jsonText(parameters);
    if (!json) {
        return httpError(HTTPErrorCode::ParameterEncoding, "a parameter has no JSON form");
    }
    request.headerFields.try_emplace("Content-Type", "application/json");
    request.body = Data(*std::move(json));
    return std::nullopt;
}

} // namespace detail

} // namespace KeloAPI
