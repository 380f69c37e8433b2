#pragma once

#import <KeloAPIObjC/api/EndpointResult.h>

#include <KeloAPI/http/Timeline.hpp>
#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/Convert.hpp>

#include <optional>

namespace KeloBridge {

inline id toObjC(const std::optional<KeloAPI::Metadata> &value) {
    return value ? valueToObjC(*value) : nil;
}
inline id toObjC(const KeloAPI::Timeline &value) {
    return valueToObjC(value);
}

/// Tells a completion what the C++ library tells, each value as its counterpart.
struct Telling {
    Completion heard;

    template <class... Values>
    void operator()(const Values &...values) const {
        inPool([&] { heard(toObjC(values)...); });
    }
};

/// An object of class `made`, autoreleased, that tells of an error, or where that is null of what
/// the success brought.
inline id toResult(Class made, const KeloAPI::Error *failure, id content) {
    NSError *told = failure == nullptr ? nil : error(*failure);
    return [[[made alloc] initWithContent:content error:told] autorelease];
}

/// Tells what `convert` makes of what the C++ library tells.
template <class Convert>
auto telling(const Completion &heard, Convert convert) {
    return [=](const auto &...told) { inPool([&] { heard(convert(told...)); }); };
}

/// Tells an outcome as an object of class `made`; `content` gives what a success brings.
template <class Content>
auto tellingOutcome(const Completion &heard, Class made, Content content) {
    return telling(heard, [=](const auto &result) {
        const auto *failure = result.error();
        return toResult(made, failure, failure == nullptr ? toObjC(content(result)) : nil);
    });
}

/// A C++ function that tells; empty where nothing would hear of it.
template <class Function>
Function tellingIfHeard(const Completion &heard) {
    return heard ? Function(Telling{heard}) : nullptr;
}

} // namespace KeloBridge
