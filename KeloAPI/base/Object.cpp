#include <KeloAPI/base/Object.hpp>

namespace KeloAPI {

Object::Companion::~Companion() = default;

Object::~Object() {
    deleteCompanion();
}

Object::Companion* Object::companion() const noexcept {
    return _companion.load(std::memory_order_acquire);
}

Object::Companion& Object::attachCompanion(std::unique_ptr<Companion> made) const {
    Companion* there = nullptr;
    if (_companion.compare_exchange_strong(there, made.get(), std::memory_order_acq_rel,
                                           std::memory_order_acquire)) {
        there = made.release();
    }
    return *there;
}

void Object::deleteCompanion() const noexcept {
    // It stands in its slot while it goes: what it does then may ask for it.
    delete _companion.load(std::memory_order_acquire);
    _companion.store(nullptr, std::memory_order_relaxed);
}

} // namespace KeloAPI
