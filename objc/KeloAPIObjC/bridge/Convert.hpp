#pragma once

#include <KeloAPI/base/Range.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <chrono>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

/// Between the values of both languages, chosen by the C++ type: `toObjC` gives what a property is
/// read as, nil for what is absent, and `assign` changes a member. Nil for a member that cannot do
/// without a value raises `NSInvalidArgumentException`, which names the argument; a text is empty.
namespace KeloBridge {

template <class T>
concept Scalar = std::is_arithmetic_v<T> || std::is_enum_v<T>;

template <Scalar T>
T toObjC(T value) {
    return value;
}

inline NSString *toObjC(std::string_view value) {
    return string(value);
}
inline NSString *toObjC(const std::string &value) {
    return string(value);
}
inline NSString *toObjC(const std::optional<std::string> &value) {
    return string(value);
}
inline NSURL *toObjC(const KeloAPI::URL &value) {
    return url(value);
}
inline NSURL *toObjC(const std::optional<KeloAPI::URL> &value) {
    return url(value);
}
inline NSDate *toObjC(KeloAPI::Date value) {
    return date(value);
}
inline NSDate *toObjC(const std::optional<KeloAPI::Date> &value) {
    return date(value);
}
inline NSNumber *toObjC(const KeloAPI::Number &value) {
    return number(value);
}
inline NSNumber *toObjC(const std::optional<KeloAPI::Number> &value) {
    return number(value);
}
template <Scalar T>
NSNumber *toObjC(const std::optional<T> &value) {
    return value ? number(KeloAPI::Number::of(*value)) : nil;
}
inline NSError *toObjC(const std::optional<KeloAPI::Error> &value) {
    return error(value);
}
inline NSRange toObjC(KeloAPI::Range value) {
    return NSMakeRange(static_cast<NSUInteger>(value.location),
                       static_cast<NSUInteger>(value.length));
}
inline NSTimeInterval toObjC(std::chrono::microseconds value) {
    return std::chrono::duration<double>(value).count();
}
/// No element is null.
template <class T>
NSArray *toObjC(const std::vector<std::shared_ptr<T>> &objects) {
    NSMutableArray *made = [NSMutableArray arrayWithCapacity:objects.size()];
    for (const auto &object : objects) {
        [made addObject:toObjC(object)];
    }
    return made;
}

/// Nil is no objects. One that is no `T` raises `NSInvalidArgumentException`.
template <class T>
std::vector<std::shared_ptr<T>> objects(NSArray *array) {
    std::vector<std::shared_ptr<T>> made;
    made.reserve([array count]);
    for (NSUInteger i = 0; i < [array count]; ++i) {
        made.push_back(toNative<T>([array objectAtIndex:i]));
    }
    return made;
}

/// The JSON object that a dictionary is, for the length of an expression.
class JsonOf {
public:
    explicit JsonOf(NSDictionary *dictionary)
        : _read(document(dictionary)) {}
    KeloAPI::JsonObject operator*() const { return *_read.root().object(); }

private:
    const KeloAPI::JsonDocument _read;
};

template <Scalar T, class Given>
void assign(T &member, Given value, NSString *) {
    member = static_cast<T>(value);
}
inline void assign(std::string &member, NSString *value, NSString *) {
    member = text(value);
}
inline void assign(std::optional<std::string> &member, NSString *value, NSString *) {
    member = optionalText(value);
}
inline void assign(std::optional<KeloAPI::URL> &member, NSURL *value, NSString *) {
    member = optionalURL(value);
}
inline void assign(KeloAPI::Date &member, NSDate *value, NSString *name) {
    member = requiredDate(value, name);
}
inline void assign(std::optional<KeloAPI::Date> &member, NSDate *value, NSString *) {
    member = optionalDate(value);
}
inline void assign(KeloAPI::Number &member, NSNumber *value, NSString *name) {
    member = requiredNumber(value, name);
}
inline void assign(std::optional<KeloAPI::Number> &member, NSNumber *value, NSString *) {
    member = value == nil ? std::nullopt : std::optional(number(value));
}
inline void assign(std::optional<bool> &member, NSNumber *value, NSString *) {
    member = optionalBool(value);
}
inline void assign(std::optional<double> &member, NSNumber *value, NSString *) {
    member = optionalDouble(value);
}
inline void assign(std::optional<std::int64_t> &member, NSNumber *value, NSString *) {
    member = optionalInteger(value);
}
inline KeloAPI::Range range(NSRange value) {
    return {static_cast<std::int64_t>(value.location), static_cast<std::int64_t>(value.length)};
}
inline void assign(KeloAPI::Range &member, NSRange value, NSString *) {
    member = range(value);
}
template <class T>
void assign(std::shared_ptr<T> &member, id value, NSString *) {
    member = toNative<T>(value);
}
template <class T>
void assign(std::vector<std::shared_ptr<T>> &member, NSArray *value, NSString *) {
    member = objects<T>(value);
}

} // namespace KeloBridge
