#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

namespace KeloAPI {

std::shared_ptr<Object> AnyObjectJsonParser::parse(const JsonObject&) const {
    throw JsonParseError(JsonParseError::NotImplemented);
}

std::shared_ptr<Object> AnyObjectParserAdaptor::parse(const JsonObject& json) const {
    auto [object, error] = _jsonParser(json);
    if (error) {
        std::rethrow_exception(error);
    }
    if (!object) {
        throw JsonParseError(JsonParseError::InsufficientData);
    }
    return object;
}

} // namespace KeloAPI
