#include <KeloAPIObjC/bridge/BridgedParser.hpp>

#import <KeloAPIObjC/bridge/Caught.h>
#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

#include <KeloAPI/parsing/ParserError.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

namespace KeloBridge {

namespace {

using KeloAPI::JsonParseError;
using KeloAPI::ParserError;

/// A call of a host's parser, and what came of it.
struct Call {
    ::AnyObjectJsonParser *parser;
    NSDictionary *json;
    NSError *failure;
    id made;
};

void parse(void *context) {
    Call &call = *static_cast<Call *>(context);
    call.made = [call.parser parse:call.json error:&call.failure];
}

[[noreturn]] void throwRaised(NSException *raised) {
    throw ParserError(KeloAPI::Error::withMessage(text([raised name]), 0, text([raised reason])));
}

[[noreturn]] void throwFailure(NSError *failure) {
    const KeloAPI::Error known = error(failure);
    if (known.domain() != JsonParseError::domain || known.code() < JsonParseError::NotImplemented ||
        known.code() > JsonParseError::InvalidData) {
        throw ParserError(known);
    }
    throw JsonParseError(static_cast<JsonParseError::Case>(known.code()));
}

std::shared_ptr<Object> askedOf(id host, const KeloAPI::JsonObject &json) {
    Call call = {static_cast<::AnyObjectJsonParser *>(host), dictionary(json), nil, nil};
    if (NSException *raised = KLCaught(KeloBridge::parse, &call)) {
        throwRaised(raised);
    }
    if (call.made != nil) {
        return toNative(call.made);
    }
    if (call.failure != nil) {
        throwFailure(call.failure);
    }
    throw JsonParseError(JsonParseError::InsufficientData);
}

std::shared_ptr<Object> madeBy(const KeloAPI::AnyObjectJsonParser &parser,
                               const KeloAPI::JsonObject &json) {
    const auto *bridged = dynamic_cast<const BridgedParser *>(&parser);
    return bridged == nullptr ? parser.parse(json) : bridged->parseItself(json);
}

} // namespace

BridgedParser::~BridgedParser() = default;

std::shared_ptr<Object> BridgedParser::parse(const KeloAPI::JsonObject &json) const {
    const Pool pool; // what is raised is caught in it
    id host = overriding(*this, @selector(parse:error:), [::AnyObjectJsonParser class]);
    return host == nil ? parseItself(json) : askedOf(host, json);
}

std::shared_ptr<Object> BridgedParser::parseItself(const KeloAPI::JsonObject &json) const {
    return KeloAPI::AnyObjectJsonParser::parse(json);
}

id parsed(const KeloAPI::AnyObjectJsonParser &parser, NSDictionary *json, NSError **failure) {
    std::shared_ptr<Object> made;
    try {
        if (json == nil) {
            throw JsonParseError(JsonParseError::InsufficientData);
        }
        const auto read = document(json);
        made = madeBy(parser, *read.root().object());
    } catch (...) {
        NSError *thrown = error(KeloAPI::thrownParserError());
        if (failure != nullptr) {
            *failure = thrown;
        }
        return nil;
    }
    return toObjC(made);
}

} // namespace KeloBridge
