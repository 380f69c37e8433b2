#include <KeloAPIObjC/bridge/Life.hpp>

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>

namespace KeloBridge {

namespace {

std::atomic<std::size_t> awake{0};

} // namespace

Life::~Life() {
    _ending = true;
    if (hasAdopted() && _references > 0) {
        --awake; // another thread's object took its place
    }
    const Pool pool;
    [_object dealloc];
}

Life &Life::adopt(const std::shared_ptr<Object> &native) {
    _address = native.get();
    _known = native;
    _native = native;
    ++awake;
    return static_cast<Life &>(native->attachCompanion(std::unique_ptr<Companion>(this)));
}

std::size_t Life::references() const {
    const long references = _references;
    return references > 0 ? static_cast<std::size_t>(references) : 1;
}

/// False where the object is at rest.
bool Life::retainAwake() {
    long known = _references;
    while (known > 0) {
        if (_references.compare_exchange_weak(known, known + 1)) {
            return true;
        }
    }
    return false;
}

/// False where this is the last reference.
bool Life::releaseAwake() {
    long known = _references;
    while (known > 1) {
        if (_references.compare_exchange_weak(known, known - 1)) {
            return true;
        }
    }
    return false;
}

void Life::retain() {
    if (!retainAwake()) {
        retain(_known.lock());
    }
}

void Life::retain(const std::shared_ptr<Object> &native) {
    if (retainAwake()) {
        return;
    }
    const std::lock_guard lock(_mutex);
    if (_references++ == 0) {
        _native = native;
        awake += native == nullptr ? 0 : 1; // as in a `dealloc` that retains its object
    }
}

void Life::release() {
    if (releaseAwake()) {
        return;
    }
    const std::shared_ptr<Object> kept = native(); // to its end behind the lock
    {
        const std::lock_guard lock(_mutex);
        KeloAPI::require(_references > 0, "an object is released once for each reference");
        if (--_references > 0) {
            return;
        }
        _native = nullptr;
    }
    if (kept != nullptr) {
        --awake;
    } else if (!_ending) {
        delete this; // nobody has adopted it
    }
}

Life *lifeOf(const Object &native) {
    return static_cast<Life *>(native.companion());
}

std::size_t aliveCount() {
    return awake;
}

} // namespace KeloBridge
