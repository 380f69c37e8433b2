#pragma once

#include <KeloAPI/base/Export.hpp>

#include <chrono>
#include <optional>
#include <string_view>

namespace KeloAPI {

/// An instant in UTC, to the microsecond: a time point of the system's clock.
class KELO_API Date : public std::chrono::sys_time<std::chrono::microseconds> {
public:
    /// What the standard library knows it as.
    using TimePoint = std::chrono::sys_time<std::chrono::microseconds>;

    /// 1970-01-01 00:00.
    constexpr Date() = default;
    /// The same instant.
    constexpr Date(TimePoint instant)
        : TimePoint(instant) {}
    using TimePoint::TimePoint;

    /// The current instant.
    static Date now();
};

/// An instant in seconds since 1970-01-01 00:00 UTC, with their fraction.
KELO_API double timeIntervalSince1970(Date date);

/// The instant `seconds` from now, or the first or last that a `Date` can hold where it lies
/// beyond.
KELO_API Date dateSinceNow(double seconds);

/// Reads the service's dates: the pattern "yyyy-MM-dd'T'HH:mm:s.SSS" in UTC, whatever the
/// process's locale and time zone.
class KELO_API DateFormatter {
public:
    /// The instant that `text` names, or none when it does not match. Seconds may have one digit
    /// or two; any number of fraction digits is read and truncated to milliseconds, but there must
    /// be one; nothing may follow.
    std::optional<Date> date(std::string_view text) const;
};

} // namespace KeloAPI
