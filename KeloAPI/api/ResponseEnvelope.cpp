#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>
#include <KeloAPI/parsing/ParserError.hpp>
#include <KeloAPI/Settings.hpp>

#include <cstdint>
#include <string>

namespace KeloAPI {

namespace {

constexpr std::int64_t envelopeErrorCode = -1;
constexpr std::int64_t captchaCode = 419;

Error envelopeError(const char* message, std::optional<Error> underlying = {}) {
    return Error::withMessage(Settings::errorDomain, envelopeErrorCode, message,
                              std::move(underlying));
}

Error serviceError(std::string_view message, const JsonValue& code, const JsonValue& data) {
    const std::int64_t status = code.integer().value_or(envelopeErrorCode);
    Error::UserInfo info;
    info.emplace(NSLocalizedDescriptionKey, std::string(message));
    info.emplace(KLAPIStatusCodeKey, Number::of(status));
    if (const auto text = data.text(); text && status == captchaCode) {
        if (auto url = URL::parse(*text)) {
            info.emplace(KLCaptchaUrlKey, *std::move(url));
        }
    }
    return {Settings::errorDomain, status, std::move(info)};
}

/// What a parser has just thrown as the envelope's error; the record's position goes with it.
ResponseEnvelope parsingFailed(std::optional<std::size_t> record) {
    Error cause = thrownParserError();
    if (record) {
        Error::UserInfo info = cause.userInfo();
        info.emplace("record", Number::of(static_cast<std::uint64_t>(*record)));
        cause = {cause.domain(), cause.code(), std::move(info)};
    }
    return {std::nullopt, envelopeError("Unable to parse posts from response", std::move(cause))};
}

using RecordParser = std::function<void(const JsonObject& record)>;

ResponseEnvelope readList(const JsonObject& data, const JsonObjectList& list,
                          const RecordParser& parseRecord) {
    std::size_t position = 0;
    try {
        for (const JsonObject record : list) {
            parseRecord(record);
            ++position;
        }
    } catch (...) {
        return parsingFailed(position);
    }
    return {Metadata(data), std::nullopt};
}

ResponseEnvelope readSingle(const JsonObject& data, const RecordParser& parseRecord) {
    try {
        if (!data.empty()) {
            parseRecord(data);
        }
    } catch (...) {
        return parsingFailed(std::nullopt);
    }
    return {};
}

} // namespace

ResponseEnvelope readEnvelope(const ResponseContent& content, const RecordParser& parseRecord) {
    const auto document = serializeJSON(content);
    if (!document) {
        return {std::nullopt, document.error()};
    }
    const auto root = document.value().root().object();
    if (!root) {
        return {std::nullopt, envelopeError("Data section in response is missing")};
    }
    const auto [error, code, data] = root->values("error", "code", "data");
    if (const auto message = error.text(); message && !message->empty()) {
        return {std::nullopt, serviceError(*message, code, data)};
    }
    const auto object = data.object();
    if (!object) {
        return {std::nullopt, envelopeError("Malformed data section in response")};
    }
    if (const auto list = (*object)["records"].objects()) {
        return readList(*object, *list, parseRecord);
    }
    return readSingle(*object, parseRecord);
}

} // namespace KeloAPI
