#pragma once

#import <Foundation/Foundation.h>

namespace KeloBridge {

/// An autorelease pool for what the C++ library calls: its threads have none, and the host's may
/// not have one for each task.
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

} // namespace KeloBridge
