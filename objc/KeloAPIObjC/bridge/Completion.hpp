#pragma once

#import <KeloAPIObjC/bridge/KLBlocks.h>

#include <KeloAPIObjC/bridge/Pool.hpp>

#include <memory>

namespace KeloBridge {

/// A block that stays, by `copy`, which is null in a process without a blocks runtime: there, one
/// on the stack would be gone when it is called, and raises `NSInvalidArgumentException`.
id blockToKeep(id block, void *(*copy)(const void *block));

/// What hears of a call: a target with its action, or a block. It is kept alive; copies are the
/// same one. The caller sees to an autorelease pool.
class Completion {
public:
    /// A nil target hears nothing. One that does not know the action raises
    /// `NSInvalidArgumentException`.
    Completion(id target, SEL action);
    /// A nil block hears nothing. One on the stack raises `NSInvalidArgumentException` in a process
    /// without a blocks runtime.
    explicit Completion(id block);

    /// Calls with objects, and numbers of exactly the types that the action or the block takes.
    template <class... Values>
    void operator()(Values... values) const;

    /// Whether anything hears.
    explicit operator bool() const { return _listener != nullptr; }

    /// Nil for a target with its action.
    id block() const { return _listener == nullptr ? nil : _listener->block; }

private:
    /// Any function, by way of which others are cast.
    using Function = void (*)();

    struct Listener {
        Listener(id listening, SEL selector);
        explicit Listener(id given);
        Listener(const Listener &) = delete;
        Listener &operator=(const Listener &) = delete;
        ~Listener();
        /// The code of the block, which takes the block itself before the values.
        Function blockCode() const;

        id target = nil;
        SEL action = nullptr;
        id block = nil;
    };

    std::shared_ptr<const Listener> _listener;
};

template <class... Values>
void Completion::operator()(Values... values) const {
    const auto listener = _listener; // it may let this one go
    if (listener == nullptr) {
        return;
    }
    if (listener->block != nil) {
        const auto code = reinterpret_cast<void (*)(id, Values...)>(listener->blockCode());
        code(listener->block, values...);
        return;
    }
    const auto method =
        reinterpret_cast<Function>([listener->target methodForSelector:listener->action]);
    reinterpret_cast<void (*)(id, SEL, Values...)>(method)(listener->target, listener->action,
                                                           values...);
}

} // namespace KeloBridge
