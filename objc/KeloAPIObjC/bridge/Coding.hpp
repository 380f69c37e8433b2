#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPIObjC/bridge/Convert.hpp>

#include <memory>
#include <optional>
#include <string>

/// What stands under a key of a keyed coder.
namespace KeloBridge {

/// The Foundation's class of a value.
inline Class foundationClass(const std::string *) {
    return [NSString class];
}
inline Class foundationClass(const KeloAPI::URL *) {
    return [NSURL class];
}
inline Class foundationClass(const KeloAPI::Date *) {
    return [NSDate class];
}
inline Class foundationClass(const KeloAPI::Number *) {
    return [NSNumber class];
}

/// Nil for a missing key, for null and for an object of another class.
id decodedObject(NSCoder *coder, NSString *key, Class expected);

/// The value; absent where there is none. An empty URL is one.
template <class T>
std::optional<T> decoded(NSCoder *coder, NSString *key) {
    std::optional<T> made;
    assign(made, decodedObject(coder, key, foundationClass(static_cast<const T *>(nullptr))), key);
    return made;
}

/// Reads a member, which stays what it is where the archive lacks it.
template <class T>
void decode(NSCoder *coder, T &member, NSString *key) {
    member = decoded<T>(coder, key).value_or(member);
}
/// The same for one that may be absent, and then is.
template <class T>
void decode(NSCoder *coder, std::optional<T> &member, NSString *key) {
    member = decoded<T>(coder, key);
}
template <class T>
void decode(NSCoder *coder, std::shared_ptr<T> &member, NSString *key) {
    member = std::dynamic_pointer_cast<T>(toNative([coder decodeObjectForKey:key]));
}
/// No and 0 where the archive lacks them.
void decode(NSCoder *coder, bool &member, NSString *key);
void decode(NSCoder *coder, double &member, NSString *key);

/// Raises `NSInvalidArgumentException` for an object whose class is not archived.
[[noreturn]] void raiseNotArchived(id object, NSCoder *coder);

void encode(NSCoder *coder, id value, NSString *key);
void encode(NSCoder *coder, BOOL value, NSString *key);
void encode(NSCoder *coder, double value, NSString *key);
void encode(NSCoder *coder, int64_t value, NSString *key);
void encode(NSCoder *coder, NSRange value, NSString *key);

} // namespace KeloBridge
