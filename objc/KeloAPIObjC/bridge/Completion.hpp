#pragma once

#import <Foundation/Foundation.h>

#include <memory>

namespace KeloBridge {

/// What hears of a call: a target with its action, or a block. Keeps it alive; copies are the same
/// one. The caller sees to an autorelease pool.
class Completion {
public:
    /// A nil target hears nothing.
    Completion(id target, SEL action);
    /// A block, as clang and the blocks runtime lay it out; nil hears nothing.
    explicit Completion(id block);

    void operator()() const;
    void operator()(id first) const;
    void operator()(id first, id second) const;
    void operator()(id first, id second, id third) const;
    void operator()(id first, double second) const;

private:
    struct Listener;
    template <class... Values>
    void call(Values... values) const;

    std::shared_ptr<const Listener> _listener;
};

/// An autorelease pool for what the C++ library calls: its threads have none, and the host's may not
/// have one for each task.
class Pool {
public:
    Pool();
    Pool(const Pool &) = delete;
    Pool &operator=(const Pool &) = delete;
    ~Pool();

private:
    NSAutoreleasePool *const _pool;
};

} // namespace KeloBridge
