#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A snapshot of a loop counter and the rate at which it grows, so that a count can keep rising on
/// the screen between two responses of the service. One thread at a time.
class KELO_API LoopData final : public Archivable {
public:
    /// Loops counted at the instant `created`; an unsigned 64-bit integer.
    Number count;
    /// Growth of the counter, in loops per second; a double.
    Number velocity;
    /// The instant at which `count` was true.
    Date created;
    /// A flag of the service, carried as given.
    bool onFire = false;

    /// A snapshot taken now.
    LoopData(Number initialCount, Number initialVelocity)
        : count(initialCount)
        , velocity(initialVelocity)
        , created(Date::now()) {}

    /// The same of plain numbers.
    LoopData(std::uint64_t initialCount, double initialVelocity)
        : LoopData(Number::of(initialCount), Number::of(initialVelocity)) {}

    /// Adds loops that the host has seen itself. A sum beyond 64 bits stops the process. The
    /// extrapolation goes on from the old instant.
    void addLoops(std::uint64_t n);

    /// Loops estimated to have happened since `created`: velocity times elapsed seconds, without
    /// the fraction. A product that is negative, not finite or not below 2^64 stops the process; a
    /// velocity that came from elsewhere may be any double, so look at it first.
    std::uint64_t loopsSinceCreation() const;

    static constexpr std::string_view archivedClassName = "KLLoopData"; ///< Its name in an archive.
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Null unless count and velocity are there; a missing `created` is the moment of decoding.
    static std::shared_ptr<LoopData> initWithCoder(KeyedUnarchiver& coder);
};

/// Reads "count" and "velocity" (numbers, required: `InsufficientData`), "created" (a date; the
/// moment of parsing when it is missing or not a date) and "onFire" (a boolean; false).
class KELO_API LoopDataParser final : public JsonParser<LoopData> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<LoopData> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
