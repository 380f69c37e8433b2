#include "Rule.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/Settings.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

/// The map is made at its first use: rules are, before main.
const char* nameOf(HTTPErrorCode code) {
    static const std::map<HTTPErrorCode, const char*> names = {
        {HTTPErrorCode::Unknown, "Unknown"},
        {HTTPErrorCode::Cancelled, "Cancelled"},
        {HTTPErrorCode::TimedOut, "TimedOut"},
        {HTTPErrorCode::CannotFindHost, "CannotFindHost"},
        {HTTPErrorCode::CannotConnect, "CannotConnect"},
        {HTTPErrorCode::ConnectionLost, "ConnectionLost"},
        {HTTPErrorCode::ServerTrust, "ServerTrust"},
        {HTTPErrorCode::UnsupportedURL, "UnsupportedURL"},
        {HTTPErrorCode::TooManyRedirects, "TooManyRedirects"},
        {HTTPErrorCode::BadServerResponse, "BadServerResponse"},
        {HTTPErrorCode::BadJson, "BadJson"},
        {HTTPErrorCode::EmptyBody, "EmptyBody"},
        {HTTPErrorCode::TextEncoding, "TextEncoding"},
        {HTTPErrorCode::HTTPStatus, "HTTPStatus"},
        {HTTPErrorCode::BodyTooLarge, "BodyTooLarge"},
        {HTTPErrorCode::OutOfResources, "OutOfResources"}};
    const auto name = names.find(code);
    return name == names.end() ? "of no name here" : name->second;
}

Outcome envelopeOutcome(const Error& error) {
    const std::map<std::string, Outcome> texts = {
        {"Data section in response is missing", noObject},
        {"Malformed data section in response", noData},
        {"Unable to parse posts from response", noRecord}};
    const auto found = texts.find(error.localizedDescription());
    return found == texts.end() ? error.description() : found->second;
}

} // namespace

Outcome outcomeOf(HTTPErrorCode code) {
    return std::to_string(static_cast<int>(code)) + ' ' + nameOf(code);
}

Outcome outcomeOf(std::int64_t serviceCode) {
    return "service " + std::to_string(serviceCode);
}

Outcome outcomeOf(const std::optional<Error>& error) {
    if (!error) {
        return ok;
    }
    if (error->domain() == HTTPErrorDomain) {
        const auto code = static_cast<HTTPErrorCode>(error->code());
        EXPECT_EQ(error->integer(HTTPStatusCodeKey).has_value(), code == HTTPErrorCode::HTTPStatus);
        return outcomeOf(code);
    }
    if (error->domain() != Settings::errorDomain) {
        return error->description();
    }
    return error->integer(KLAPIStatusCodeKey) == error->code() ? outcomeOf(error->code())
                                                               : envelopeOutcome(*error);
}

Rule Rule::but(const std::vector<CallKind>& kinds, const Outcome& outcome) const {
    Rule rule = *this;
    for (const CallKind kind : kinds) {
        rule._ofKind.at(static_cast<std::size_t>(kind)) = outcome;
    }
    return rule;
}

Rule Rule::but(const std::vector<std::string>& calls, const Outcome& outcome) const {
    Rule rule = *this;
    for (const std::string& call : calls) {
        rule._ofCall[call] = outcome;
    }
    return rule;
}

Outcome Rule::of(const std::string& call, CallKind kind) const {
    const auto exception = _ofCall.find(call);
    return exception == _ofCall.end() ? _ofKind.at(static_cast<std::size_t>(kind))
                                      : exception->second;
}

Rule ofParsedCalls(const Outcome& outcome) {
    return Rule(outcome).but({CallKind::Text, CallKind::Loops, CallKind::File}, ok);
}

} // namespace KeloAPI::testing
