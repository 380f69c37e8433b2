#pragma once

#include <new>
#include <utility>

namespace KeloAPI {

/// Holds a process-wide object that is made at its first use, as a function-local static, and never
/// destroyed: a thread that outlives `main` may still use it while the process exits.
template <class T>
class NeverDestroyed {
public:
    template <class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) {
        ::new (static_cast<void*>(_storage)) T(std::forward<Arguments>(arguments)...);
    }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(_storage)); }
    T* operator->() { return &**this; }

private:
    alignas(T) unsigned char _storage[sizeof(T)];
};

} // namespace KeloAPI
