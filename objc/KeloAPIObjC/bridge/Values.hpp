#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/platform/Date.hpp>
#include <KeloAPI/platform/Error.hpp>
#include <KeloAPI/platform/Json.hpp>
#include <KeloAPI/platform/Number.hpp>
#include <KeloAPI/platform/URL.hpp>

#include <optional>
#include <string>
#include <string_view>

/// Between the values of both languages. What an Objective-C function returns is autoreleased, and
/// nil stands for what is absent.
namespace KeloBridge {

/// UTF-8; what is no UTF-8 is replaced by U+FFFD.
NSString *string(std::string_view text);
NSString *string(const std::string &text);
NSString *string(const std::optional<std::string> &text);
std::string text(NSString *string);
std::optional<std::string> optionalText(NSString *string);

NSNumber *number(const KeloAPI::Number &number);
NSNumber *number(const std::optional<KeloAPI::Number> &number);
/// Keeps the kind: a boolean, a signed or unsigned integer, or a double.
KeloAPI::Number number(NSNumber *number);

NSDate *date(KeloAPI::Date date);
NSDate *date(const std::optional<KeloAPI::Date> &date);
/// To the microsecond.
KeloAPI::Date date(NSDate *date);

NSURL *url(const KeloAPI::URL &url);
NSURL *url(const std::optional<KeloAPI::URL> &url);
/// Absent for nil and for what is no URL to the C++ library.
std::optional<KeloAPI::URL> url(NSURL *url);

/// Domain, code and user info; what lies behind the error stands under `NSUnderlyingErrorKey`.
NSError *error(const KeloAPI::Error &error);
NSError *error(const std::optional<KeloAPI::Error> &error);
KeloAPI::Error error(NSError *error);

/// Objects, lists, texts, numbers and null as their Foundation counterparts.
id value(KeloAPI::JsonValue value);
NSDictionary *dictionary(const KeloAPI::JsonObject &object);
/// The document of a dictionary. Nil and what JSON cannot tell raise `NSInvalidArgumentException`.
KeloAPI::JsonDocument document(NSDictionary *dictionary);

} // namespace KeloBridge
