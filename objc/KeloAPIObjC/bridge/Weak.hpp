#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>

namespace KeloBridge {

/// An object that is held without being kept alive. Any thread.
class Weak {
public:
    /// Of nothing for nil. Objects of the class of `object` are watched from then on: their
    /// `release` is extended.
    explicit Weak(id object);

    /// The object, retained and autoreleased; nil once it has gone.
    id object() const;

private:
    struct Watched;
    friend struct Watching;
    std::shared_ptr<Watched> _watched;
};

/// A C++ object that belongs to an Objective-C one: made by `make` at the first call, the same one
/// afterwards, and let go with it. There is one for each object. Null for nil.
std::shared_ptr<void> companion(id object, const std::function<std::shared_ptr<void>()> &make);

} // namespace KeloBridge
