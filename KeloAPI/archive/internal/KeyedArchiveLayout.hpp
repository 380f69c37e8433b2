#pragma once

#include <KeloAPI/base/Date.hpp>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

/// The names that make a property list a keyed archive. `objects` holds every object once, the
/// first being null; a UID refers to one by its place.
namespace KeloAPI::KeyedArchiveLayout {

constexpr std::string_view archiver = "$archiver";
constexpr std::string_view archiverName = "NSKeyedArchiver";
constexpr std::string_view version = "$version";
constexpr std::int64_t versionNumber = 100000;
constexpr std::string_view top = "$top";
constexpr std::string_view root = "root";
constexpr std::string_view objects = "$objects";
constexpr std::string_view null = "$null";

/// An object's class, and what the entry of a class has.
constexpr std::string_view objectClass = "$class";
constexpr std::string_view className = "$classname";
constexpr std::string_view classChain = "$classes";
constexpr std::string_view rootClass = "NSObject";

/// The platform's own classes and their keys.
constexpr std::string_view dateClass = "NSDate";
constexpr std::string_view dateTime = "NS.time";
constexpr std::string_view urlClass = "NSURL";
constexpr std::string_view urlBase = "NS.base";
constexpr std::string_view urlRelative = "NS.relative";
constexpr std::string_view valueClass = "NSValue";
constexpr std::string_view valueSpecial = "NS.special";
constexpr std::int64_t specialRange = 4;
constexpr std::string_view rangeLocation = "NS.rangeval.location";
constexpr std::string_view rangeLength = "NS.rangeval.length";
constexpr std::string_view arrayClass = "NSArray";
constexpr std::string_view arrayObjects = "NS.objects";
constexpr std::string_view textClass = "NSString";
constexpr std::string_view textString = "NS.string";
constexpr std::string_view textBytes = "NS.bytes";

/// Where the platform counts its dates from.
constexpr Date referenceDate = std::chrono::sys_days(std::chrono::January / 1 / 2001);

/// The key under which a model's key is kept: the platform has those with "$" for itself.
inline std::string escapedKey(std::string_view key) {
    return key.starts_with('$') ? "$" + std::string(key) : std::string(key);
}

} // namespace KeloAPI::KeyedArchiveLayout
