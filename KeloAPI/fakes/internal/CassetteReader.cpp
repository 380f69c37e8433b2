#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/fakes/Cassette.hpp>
#include <KeloAPI/fakes/internal/CassetteFile.hpp>
#include <KeloAPI/json/Json.hpp>

#include <charconv>
#include <utility>

namespace KeloAPI::fakes {

namespace {

/// Reads values from a cassette and keeps the first thing that is wrong with it; values that are
/// read after that mean nothing.
class CassetteReader {
public:
    const std::string& problem() const { return _problem; }

    CassetteFile file(const JsonValue& root) {
        const auto version = member(root, "cassetteVersion").integer();
        if (!version) {
            fail("\"cassetteVersion\" is missing");
        } else if (*version != cassetteVersion) {
            fail("it has version " + std::to_string(*version) + ", this library reads version " +
                 std::to_string(cassetteVersion));
        }
        CassetteFile file;
        file.maxBodyBytes =
            static_cast<std::size_t>(integer(member(root, "maxBodyBytes"), "\"maxBodyBytes\""));
        const auto names = list(member(root, "secretNames"), "\"secretNames\"");
        for (const JsonValue name : names) {
            file.secretNames.add(text(name, "a secret name"));
        }
        const auto exchanges = list(member(root, "exchanges"), "\"exchanges\"");
        for (const JsonValue exchange : exchanges) {
            _place = "exchange " + std::to_string(file.exchanges.size() + 1) + ": ";
            file.exchanges.push_back(this->exchange(exchange));
            if (!_problem.empty()) {
                break;
            }
        }
        return file;
    }

private:
    void fail(const std::string& what) {
        if (_problem.empty()) {
            _problem = _place + what;
        }
    }

    static JsonValue member(const JsonValue& value, std::string_view name) {
        const auto object = value.object();
        return object ? (*object)[name] : JsonValue();
    }

    std::string text(const JsonValue& value, const std::string& what) {
        const auto text = value.text();
        if (!text) {
            fail(what + " is missing or not a text");
        }
        return std::string(text.value_or(""));
    }

    std::int64_t integer(const JsonValue& value, const std::string& what) {
        const auto integer = value.integer();
        if (!integer || *integer < 0) {
            fail(what + " is missing or not a number from 0 on");
        }
        return integer.value_or(0);
    }

    JsonArray list(const JsonValue& value, const std::string& what) {
        const auto list = value.array();
        if (!list) {
            fail(what + " is missing or not a list");
        }
        return list.value_or(JsonArray());
    }

    std::string url(const JsonValue& value, const std::string& what) {
        std::string url = text(value, what);
        if (!URL::parse(url)) {
            fail(what + " is not a URL");
        }
        return url;
    }

    RecordedExchange exchange(const JsonValue& value) {
        RecordedExchange exchange;
        exchange.isOver = true;
        exchange.request = request(member(value, "request"));
        const JsonValue response = member(value, "response");
        const JsonValue error = member(value, "error");
        if (response.exists()) {
            exchange.response = this->response(response, exchange.request.url);
        }
        if (error.exists()) {
            exchange.error = this->error(error);
        }
        if (!response.exists() && !error.exists()) {
            fail("there is neither a response nor an error");
        }
        return exchange;
    }

    RecordedRequest request(const JsonValue& value) {
        RecordedRequest request;
        request.method = method(text(member(value, "method"), "the request's method"));
        request.url = url(member(value, "url"), "the request's URL");
        request.headerFields = fields(member(value, "headerFields"));
        request.body = body(value);
        return request;
    }

    Method method(const std::string& text) {
        for (int number = 0; number <= static_cast<int>(Method::CONNECT); ++number) {
            if (name(static_cast<Method>(number)) == text) {
                return static_cast<Method>(number);
            }
        }
        fail("the request's method is unknown");
        return Method::GET;
    }

    RecordedResponse response(const JsonValue& value, const std::string& requestUrl) {
        RecordedResponse response;
        response.statusCode =
            static_cast<int>(integer(member(value, "status"), "the response's status"));
        const JsonValue url = member(value, "url");
        response.url = url.exists() ? this->url(url, "the response's URL") : requestUrl;
        response.headerFields = fields(member(value, "headerFields"));
        response.expectedContentLength = member(value, "expectedContentLength").integer();
        response.body = body(value);
        return response;
    }

    HeaderFields fields(const JsonValue& value) {
        HeaderFields fields;
        const auto object = value.object();
        if (!object) {
            fail("\"headerFields\" is missing or not an object");
            return fields;
        }
        for (const auto [name, field] : *object) {
            fields.emplace(name, text(field, "the header field " + std::string(name)));
        }
        return fields;
    }

    RecordedBody body(const JsonValue& message) {
        const JsonValue json = member(message, "json");
        const JsonValue plain = member(message, "text");
        const JsonValue base64 = member(message, "base64");
        const JsonValue tooLong = member(message, "tooLong");
        if (int(json.exists()) + int(plain.exists()) + int(base64.exists()) +
                int(tooLong.exists()) >
            1) {
            fail("there are two bodies in one place");
        }
        if (json.exists()) {
            return {json.description(), {}};
        }
        if (plain.exists()) {
            return {text(plain, "a body's text"), {}};
        }
        if (base64.exists()) {
            auto bytes = base64Decoded(text(base64, "a body's base64"));
            if (!bytes) {
                fail("a body is not base64");
            }
            return {std::move(bytes).value_or(""), {}};
        }
        return tooLong.exists() ? RecordedBody{{}, longBody(tooLong)} : RecordedBody();
    }

    LongBody longBody(const JsonValue& value) {
        LongBody body;
        body.size =
            static_cast<std::size_t>(integer(member(value, "bytes"), "the size of a long body"));
        const std::string digits = text(member(value, "hash"), "the hash of a long body");
        const char* const end = digits.data() + digits.size();
        if (std::from_chars(digits.data(), end, body.hash).ptr != end || digits.empty()) {
            fail("the hash of a long body is not a number");
        }
        return body;
    }

    Error error(const JsonValue& value) {
        const std::string domain = text(member(value, "domain"), "the error's domain");
        const std::string message = text(member(value, "message"), "the error's message");
        return Error::withMessage(domain, member(value, "code").integer().value_or(0), message);
    }

    std::string _problem;
    std::string _place;
};

} // namespace

Result<CassetteFile> readCassette(const std::string& text) {
    const auto failure = [](const std::string& message, std::optional<Error> underlying) {
        return Error::withMessage(CassetteErrorDomain,
                                  static_cast<std::int64_t>(CassetteErrorCode::Format),
                                  "not a cassette: " + message, std::move(underlying));
    };
    const auto document = JsonDocument::parse(text);
    if (!document) {
        return failure("it is not JSON", document.error());
    }
    CassetteReader reader;
    CassetteFile file = reader.file(document.value().root());
    if (!reader.problem().empty()) {
        return failure(reader.problem(), {});
    }
    return file;
}

} // namespace KeloAPI::fakes
