#pragma once

#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <memory>

/// Between the parsers of both languages, and what they fail with.
namespace KeloBridge {

/// A C++ parser that asks an Objective-C one, of a class derived from `AnyObjectJsonParser`, on
/// whatever thread it is asked itself.
///
/// Where that fails with an error of `KeloAPI::JsonParseError`'s domain and codes, it throws a
/// `JsonParseError`; for any other, and for an exception that it raises, a `KeloAPI::ParserError`.
/// Neither an object nor an error is `JsonParseError::InsufficientData`.
std::shared_ptr<Foreign> derivedParser(id parser);

/// What a C++ parser makes of `json`, autoreleased; nil, and the error, where it fails.
id parsed(const KeloAPI::AnyObjectJsonParser &parser, NSDictionary *json, NSError **failure);

} // namespace KeloBridge
