#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/TextDecoding.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

namespace KeloAPI {

Result<JsonDocument> serializeJSON(const ResponseContent& content) {
    if (content.error) {
        return *content.error;
    }
    if (content.body.empty()) {
        return httpError(HTTPErrorCode::EmptyBody, "the response has no body");
    }
    auto document = JsonDocument::parse(content.body);
    if (!document) {
        return httpError(HTTPErrorCode::BadJson, "the response is not valid JSON",
                         document.error());
    }
    return document;
}

Result<std::string> serializeText(const ResponseContent& content) {
    if (content.error) {
        return *content.error;
    }
    std::string charset;
    if (content.response) {
        const auto& fields = content.response->headerFields;
        if (const auto type = fields.find("Content-Type"); type != fields.end()) {
            charset = charsetOf(type->second);
        }
    }
    if (charset.empty() || content.body.empty()) {
        return content.body;
    }
    if (auto text = decodedText(content.body, charset)) {
        return *std::move(text);
    }
    return httpError(HTTPErrorCode::TextEncoding, "the response is not text in " + charset);
}

} // namespace KeloAPI
