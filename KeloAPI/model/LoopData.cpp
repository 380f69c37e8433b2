#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

void LoopData::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeNumber(count, "count");
    coder.encodeNumber(velocity, "velocity");
    coder.encodeDate(created, "created");
    coder.encodeBool(onFire, "onFire");
}

std::shared_ptr<LoopData> LoopData::initWithCoder(KeyedUnarchiver& coder) {
    const auto count = coder.decodeNumber("count");
    const auto velocity = coder.decodeNumber("velocity");
    if (!count || !velocity) {
        return nullptr;
    }
    auto loopData = std::make_shared<LoopData>(*count, *velocity);
    loopData->created = coder.decodeDate("created").value_or(loopData->created);
    loopData->onFire = coder.decodeBool("onFire");
    return loopData;
}

void LoopData::addLoops(std::uint64_t n) {
    std::uint64_t sum = 0;
    require(!__builtin_add_overflow(count.uint64Value(), n, &sum), "loop count overflows");
    count = Number::of(sum);
}

std::uint64_t LoopData::loopsSinceCreation() const {
    constexpr double twoTo64 = 18446744073709551616.0;
    const double rate = velocity.doubleValue();
    // Subtracted as doubles, which are exact for microseconds of any date near: integers could
    // overflow where a host sets an instant far away.
    using Microseconds = std::chrono::duration<double, std::micro>;
    const std::chrono::duration<double> elapsed =
        Microseconds(Date::now().time_since_epoch()) - Microseconds(created.time_since_epoch());
    const double product = rate * elapsed.count();
    // Written so that not-a-number fails it too.
    require(product >= 0.0 && product < twoTo64, "estimated loops are not a 64-bit count");
    return static_cast<std::uint64_t>(product);
}

std::shared_ptr<LoopData> LoopDataParser::parse(const JsonObject& json) const {
    const auto [count, velocity, created, onFire] =
        json.values("count", "velocity", "created", "onFire");
    const auto loops = required(count.number(), "count");
    const auto rate = required(velocity.number(), "velocity");
    auto data = std::make_shared<LoopData>(loops, rate);
    if (const auto text = created.text()) {
        if (const auto date = dateFormatter().date(*text)) {
            data->created = *date;
        }
    }
    data->onFire = onFire.boolean().value_or(false);
    return data;
}

} // namespace KeloAPI
