#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>

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
/// Keeps the kind: a boolean, a signed or unsigned integer, or a double. A decimal number is an
/// integer where it is one of 64 bits, and a double otherwise.
KeloAPI::Number number(NSNumber *number);

NSDate *date(KeloAPI::Date date);
NSDate *date(const std::optional<KeloAPI::Date> &date);
/// To the microsecond.
KeloAPI::Date date(NSDate *date);

/// Never nil: empty for what the Foundation refuses. A query or fragment right behind the authority
/// gets a "/" before it, without which GNUstep refuses them.
NSURL *url(const KeloAPI::URL &url);
/// Nil also for what the Foundation refuses.
NSURL *url(const std::optional<KeloAPI::URL> &url);

/// Domain, code and user info; what lies behind the error stands under `NSUnderlyingErrorKey`. What
/// the other side cannot tell, and a key that is no text, are left out.
NSError *error(const KeloAPI::Error &error);
NSError *error(const std::optional<KeloAPI::Error> &error);
KeloAPI::Error error(NSError *error);

/// Objects, lists, texts, numbers and null as their Foundation counterparts.
id value(KeloAPI::JsonValue value);
NSDictionary *dictionary(const KeloAPI::JsonObject &object);
/// The document of a dictionary; nil is an empty one. What JSON cannot tell (dates, numbers that
/// are not finite, what is nested deeper than the library's reader goes) is null, and a key that is
/// no text is left out.
KeloAPI::JsonDocument document(NSDictionary *dictionary);

} // namespace KeloBridge
