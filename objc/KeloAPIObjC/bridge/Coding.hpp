#pragma once

#import <Foundation/Foundation.h>

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <memory>
#include <optional>
#include <string>

/// What stands under a key of a keyed coder. Absent for a missing key, for null and for what is of
/// another kind.
namespace KeloBridge {

std::optional<std::string> decodedText(NSCoder *coder, NSString *key);
/// An empty URL is one.
std::optional<KeloAPI::URL> decodedURL(NSCoder *coder, NSString *key);
std::optional<KeloAPI::Date> decodedDate(NSCoder *coder, NSString *key);
std::optional<KeloAPI::Number> decodedNumber(NSCoder *coder, NSString *key);

/// The C++ object; null for none.
template <class T>
std::shared_ptr<T> decodedObject(NSCoder *coder, NSString *key) {
    return std::dynamic_pointer_cast<T>(shared([coder decodeObjectForKey:key]));
}

} // namespace KeloBridge
