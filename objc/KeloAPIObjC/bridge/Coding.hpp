#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <memory>
#include <optional>
#include <string>

/// What stands under a key of a keyed coder.
namespace KeloBridge {

/// Absent for a missing key, for null and for what is of another kind.
std::optional<std::string> decodedText(NSCoder *coder, NSString *key);
/// An empty URL is one.
std::optional<KeloAPI::URL> decodedURL(NSCoder *coder, NSString *key);
std::optional<KeloAPI::Date> decodedDate(NSCoder *coder, NSString *key);
std::optional<KeloAPI::Number> decodedNumber(NSCoder *coder, NSString *key);

// Members that are read: one that cannot be absent stays what it is where the archive lacks it.

void decode(NSCoder *coder, std::string &member, NSString *key);
void decode(NSCoder *coder, std::optional<std::string> &member, NSString *key);
void decode(NSCoder *coder, std::optional<KeloAPI::URL> &member, NSString *key);
void decode(NSCoder *coder, KeloAPI::Date &member, NSString *key);
void decode(NSCoder *coder, std::optional<KeloAPI::Date> &member, NSString *key);
/// No and 0 where the archive lacks it.
void decode(NSCoder *coder, bool &member, NSString *key);
void decode(NSCoder *coder, double &member, NSString *key);

template <class T>
void decode(NSCoder *coder, std::shared_ptr<T> &member, NSString *key) {
    member = std::dynamic_pointer_cast<T>(shared([coder decodeObjectForKey:key]));
}

/// Raises `NSInvalidArgumentException` for an object whose class is not archived.
[[noreturn]] void raiseNotArchived(id object, NSCoder *coder);

void encode(NSCoder *coder, id value, NSString *key);
void encode(NSCoder *coder, BOOL value, NSString *key);
void encode(NSCoder *coder, double value, NSString *key);
void encode(NSCoder *coder, int64_t value, NSString *key);
void encode(NSCoder *coder, NSRange value, NSString *key);

} // namespace KeloBridge
