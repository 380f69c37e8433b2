#pragma once

#import <KeloAPIObjC/bridge/KLBridged.h>

#include <KeloAPI/base/Object.hpp>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>

namespace KeloBridge {

using KeloAPI::Object;

/// What keeps a bridged object and its native one together.
///
///  1. The native object owns the Objective-C one: this record is its companion, and the end of the
///     record is that object's `dealloc`.
///  2. As long as anybody has a reference to the Objective-C object, it owns the native one.
///  3. The last `release` gives the native one up. Where C++ still holds it, the Objective-C object
///     rests: without a reference, but as it is. Otherwise both end there and then.
///  4. `retain` and `toObjC` take the native one of an object at rest up again.
///  5. A count goes from 0 to 1 and from 1 to 0 under the mutex; all other steps go without it.
///     Under it, no message is sent, and nothing ends.
///  6. Who takes the mutex has a shared pointer of his own to the native object, which he lets go
///     behind it: so the record outlives every use of its mutex.
///  7. Before an initialiser adopts a native object, the record belongs to the Objective-C object:
///     the last `release` ends both.
///  8. Where two threads make an Objective-C object for one native object, the first to take the
///     slot wins; that of the other ends unseen.
///  9. An object of a host's class ends before the native one begins to: its `dealloc` may use it.
class Life final : public Object::Companion {
public:
    /// Of an object that has just been allocated, with one reference.
    explicit Life(KLBridged *object)
        : _object(object) {}
    ~Life() override;

    /// Lets the object stand for `native`. The record becomes that one's companion, unless it has
    /// one: then this record ends. Returns the one that it has.
    Life &adopt(const std::shared_ptr<Object> &native);

    KLBridged *object() const { return _object; }
    bool hasAdopted() const { return _address != nullptr; }
    /// Null before an initialiser has adopted one.
    Object *address() const { return _address; }
    /// Null also while the native object ends.
    std::shared_ptr<Object> native() const { return _known.lock(); }

    /// 1 for an object at rest: then it is C++ that has it.
    std::size_t references() const;
    void retain();
    void retain(const std::shared_ptr<Object> &native);
    /// The record may be gone afterwards.
    void release();

private:
    bool retainAwake();
    bool releaseAwake();

    KLBridged *const _object;
    Object *_address = nullptr;
    std::weak_ptr<Object> _known;
    std::atomic<long> _references{1};
    std::mutex _mutex;
    /// While there are references.
    std::shared_ptr<Object> _native;
    bool _ending = false;
};

/// The record of the Objective-C object that a native one has; null while it has none.
Life *lifeOf(const Object &native);

/// How many bridged objects have references.
std::size_t aliveCount();

} // namespace KeloBridge
