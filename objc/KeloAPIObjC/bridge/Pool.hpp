#pragma once

#import <Foundation/Foundation.h>

#import <KeloAPIObjC/bridge/Caught.h>

#include <optional>
#include <type_traits>

namespace KeloBridge {

/// An autorelease pool for the end of objects: the C++ library's threads have none, and the host's
/// may not have one for each task. Nothing may be raised in it.
class Pool {
public:
    Pool()
        : _pool([NSAutoreleasePool new]) {}
    Pool(const Pool &) = delete;
    Pool &operator=(const Pool &) = delete;
    ~Pool() { [_pool drain]; }

private:
    NSAutoreleasePool *const _pool;
};

/// Calls the host's code in an autorelease pool of its own, and returns what it returns. What it
/// raises outlives the pool and goes on to the caller.
template <class Call>
auto inPool(const Call &call) {
    using Result = decltype(call());
    if constexpr (std::is_void_v<Result>) {
        KLInPool([](void *context) { (*static_cast<const Call *>(context))(); },
                 const_cast<Call *>(&call));
    } else {
        std::optional<Result> result;
        const auto keep = [&] { result.emplace(call()); };
        inPool(keep);
        return std::move(*result);
    }
}

} // namespace KeloBridge
