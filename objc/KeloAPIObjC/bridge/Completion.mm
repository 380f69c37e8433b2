#include <KeloAPIObjC/bridge/Completion.hpp>

// There where the host's compiler has blocks; this library's need not.
extern "C" {
void *_Block_copy(const void *block) __attribute__((weak));
void _Block_release(const void *block) __attribute__((weak));
}

namespace KeloBridge {

namespace {

/// The head of a block in memory, which is part of its binary interface.
struct BlockLayout {
    void *isa;
    int flags;
    int reserved;
    void (*invoke)();
};

constexpr int isOnHeap = 1 << 24;
constexpr int isGlobal = 1 << 28;

const BlockLayout &layoutOf(id block) {
    return *reinterpret_cast<const BlockLayout *>(block);
}

} // namespace

id blockToKeep(id block, void *(*copy)(const void *block)) {
    if (copy != nullptr) {
        return static_cast<id>(copy(block));
    }
    if ((layoutOf(block).flags & (isOnHeap | isGlobal)) == 0) {
        [NSException raise:NSInvalidArgumentException
                    format:@"a block on the stack, and no blocks runtime that copies it"];
    }
    return block;
}

Completion::Completion(id target, SEL action) {
    if (target == nil) {
        return;
    }
    if (action == nullptr || ![target respondsToSelector:action]) {
        [NSException raise:NSInvalidArgumentException
                    format:@"%@ has no method %@", target,
                           action == nullptr ? nil : NSStringFromSelector(action)];
    }
    _listener = std::make_shared<Listener>(target, action);
}

Completion::Completion(id block) {
    if (block != nil) {
        _listener = std::make_shared<Listener>(block);
    }
}

Completion::Listener::Listener(id listening, SEL selector)
    : target([listening retain])
    , action(selector) {}

Completion::Listener::Listener(id given)
    : block(blockToKeep(given, _Block_copy)) {}

Completion::Listener::~Listener() {
    const Pool pool;
    [target release];
    if (block != nil && _Block_release != nullptr) {
        _Block_release(block);
    }
}

Completion::Function Completion::Listener::blockCode() const {
    return layoutOf(block).invoke;
}

} // namespace KeloBridge
