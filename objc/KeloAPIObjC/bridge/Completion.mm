#include <KeloAPIObjC/bridge/Completion.hpp>

// There where the host's compiler has blocks. This library's need not.
extern "C" {
void *_Block_copy(const void *block) __attribute__((weak));
void _Block_release(const void *block) __attribute__((weak));
}

namespace KeloBridge {

namespace {

/// The part of a block's layout that every compiler keeps to.
struct BlockLayout {
    void *made;
    int flags;
    int reserved;
    void (*invoke)(void);
};

} // namespace

struct Completion::Listener {
    id target = nil;
    SEL action = nullptr;
    void *block = nullptr;

    Listener(id heard, SEL selector)
        : target([heard retain])
        , action(selector) {}
    explicit Listener(id given) {
        void *const known = static_cast<void *>(given);
        block = _Block_copy == nullptr ? known : _Block_copy(known);
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    ~Listener() {
        const Pool pool;
        [target release];
        if (block != nullptr && _Block_release != nullptr) {
            _Block_release(block);
        }
    }
};

Completion::Completion(id target, SEL action) {
    if (target != nil) {
        _listener = std::make_shared<Listener>(target, action);
    }
}

Completion::Completion(id block) {
    if (block != nil) {
        _listener = std::make_shared<Listener>(block);
    }
}

template <class... Values>
void Completion::call(Values... values) const {
    const auto heard = _listener; // it may let this one go
    if (heard == nullptr) {
        return;
    }
    if (heard->block != nullptr) {
        const auto *layout = static_cast<const BlockLayout *>(heard->block);
        reinterpret_cast<void (*)(const void *, Values...)>(layout->invoke)(layout, values...);
    } else {
        // By way of a type that converts to any other.
        const auto method = reinterpret_cast<void (*)()>(
            [heard->target methodForSelector:heard->action]);
        reinterpret_cast<void (*)(id, SEL, Values...)>(method)(heard->target, heard->action,
                                                               values...);
    }
}

void Completion::operator()() const {
    call();
}

void Completion::operator()(id first) const {
    call(first);
}

void Completion::operator()(id first, id second) const {
    call(first, second);
}

void Completion::operator()(id first, id second, id third) const {
    call(first, second, third);
}

void Completion::operator()(id first, double second) const {
    call(first, second);
}

Pool::Pool()
    : _pool([NSAutoreleasePool new]) {}

Pool::~Pool() {
    [_pool drain];
}

} // namespace KeloBridge
