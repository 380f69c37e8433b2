#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

#include <memory>

/// Between the parsers of both languages, and what they fail with.
namespace KeloBridge {

/// The C++ parser that an Objective-C object of class `AnyObjectJsonParser` stands for. Where a
/// class of the host's overrides `parse:error:`, that is asked, on whatever thread this is asked.
///
/// Where that fails with an error of `KeloAPI::JsonParseError`'s domain and codes, `parse` throws a
/// `JsonParseError`; for any other, and for an exception that it raises, a `KeloAPI::ParserError`.
/// Neither an object nor an error is `JsonParseError::InsufficientData`.
class BridgedParser : public KeloAPI::AnyObjectJsonParser {
public:
    ~BridgedParser() override;
    std::shared_ptr<KeloAPI::Object> parse(const KeloAPI::JsonObject &json) const final;
    /// What it does by itself, whatever a host overrides. Of this class: it fails as one that is
    /// not implemented.
    virtual std::shared_ptr<KeloAPI::Object> parseItself(const KeloAPI::JsonObject &json) const;
};

/// What a C++ parser makes of `json` by itself, autoreleased; nil, and the error, where it fails.
id parsed(const KeloAPI::AnyObjectJsonParser &parser, NSDictionary *json, NSError **failure);

} // namespace KeloBridge
