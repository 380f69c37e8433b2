#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// User-info key of a service error's status code, a number.
inline constexpr std::string_view KLAPIStatusCodeKey = "KLAPIStatusCodeKey";
/// User-info key of the URL at which a captcha is to be solved; with the status code 419 only, and
/// only when the service sent one.
inline constexpr std::string_view KLCaptchaUrlKey = "KLCaptchaUrlKey";

/// What a response holds beside its items.
struct ResponseEnvelope {
    /// The paging values; absent where the response is not a list.
    std::optional<Metadata> metadata;
    /// Absent for a success.
    std::optional<Error> error;
};

/// Reads a response: checks the envelope ("error", "code", "data") and has `parseRecord` parse the
/// records, or the one object, that "data" holds. Errors of the HTTP layer come through unchanged;
/// the service's and the envelope's own have the service's error domain. What `parseRecord` throws
/// ends the reading with an error, except a lack of memory, which is thrown on.
KELO_API ResponseEnvelope
readEnvelope(const ResponseContent& content,
             const std::function<void(const JsonObject& record)>& parseRecord);

/// A response and its items; none with an error.
template <class T>
struct ModelResponse : ResponseEnvelope {
    std::vector<std::shared_ptr<T>> items; ///< In the order of the response; none of them null.
};

/// Reads a response whose records are parsed by `parser`.
template <class T>
ModelResponse<T> keloModelResponseSerializer(const ResponseContent& content,
                                             const JsonParser<T>& parser) {
    ModelResponse<T> response;
    static_cast<ResponseEnvelope&>(response) =
        readEnvelope(content, [&response, &parser](const JsonObject& record) {
            response.items.push_back(detail::notNull(parser.parse(record)));
        });
    if (response.error) {
        response.items.clear();
    }
    return response;
}

} // namespace KeloAPI
