#include <KeloAPIObjC/bridge/DerivedParser.hpp>

#import <KeloAPIObjC/bridge/Caught.h>

#include <KeloAPI/parsing/ParserError.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

namespace KeloBridge {

namespace {

using KeloAPI::JsonParseError;
using KeloAPI::ParserError;

/// A call of an Objective-C parser, and what came of it.
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

class DerivedParser final : public KeloAPI::AnyObjectJsonParser, public Foreign {
public:
    explicit DerivedParser(id parser)
        : Foreign(parser) {}
    ~DerivedParser() override;
    std::shared_ptr<Object> parse(const KeloAPI::JsonObject &json) const override;
};

DerivedParser::~DerivedParser() = default;

std::shared_ptr<Object> DerivedParser::parse(const KeloAPI::JsonObject &json) const {
    const Pool pool;
    Call call = {static_cast<::AnyObjectJsonParser *>(object()), dictionary(json), nil, nil};
    if (NSException *raised = KLCaught(KeloBridge::parse, &call)) {
        throwRaised(raised);
    }
    if (call.made != nil) {
        return shared(call.made);
    }
    if (call.failure != nil) {
        throwFailure(call.failure);
    }
    throw JsonParseError(JsonParseError::InsufficientData);
}

} // namespace

std::shared_ptr<Foreign> derivedParser(id parser) {
    return std::make_shared<DerivedParser>(parser);
}

id parsed(const KeloAPI::AnyObjectJsonParser &parser, NSDictionary *json, NSError **failure) {
    std::shared_ptr<Object> made;
    try {
        if (json == nil) {
            throw JsonParseError(JsonParseError::InsufficientData);
        }
        const auto read = document(json);
        made = parser.parse(*read.root().object());
    } catch (...) {
        NSError *thrown = error(KeloAPI::thrownParserError());
        if (failure != nullptr) {
            *failure = thrown;
        }
        return nil;
    }
    return wrap(std::move(made));
}

} // namespace KeloBridge
