#pragma once

#include <KeloAPIObjC/bridge/Bridge.hpp>

namespace KeloBridge {

/// Lets an object that has just been allocated stand for the C++ object that `make` gives, and
/// returns it. Where `make` raises, or gives null, it is released; for null, nil is returned. One
/// that is initialised already is refused and stays as it is.
template <class Make>
id adoptMade(KLBridged *made, Make make) {
    requireNew(made);
    struct Unfinished {
        KLBridged *object;
        ~Unfinished() { [object release]; }
    } unfinished{made};
    auto object = make();
    if (object == nullptr) {
        return nil;
    }
    unfinished.object = nil;
    return adopt(made, object);
}

} // namespace KeloBridge
