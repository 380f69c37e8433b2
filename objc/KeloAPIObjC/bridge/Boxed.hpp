#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <memory>
#include <utility>

namespace KeloBridge {

/// Lets a value be what an Objective-C object stands for.
template <class Value>
struct Boxed final : KeloAPI::Object {
    explicit Boxed(Value boxed)
        : value(std::move(boxed)) {}

    Value value;
};

/// A new Objective-C object for each call.
template <class Value>
id valueToObjC(Value value) {
    return toObjC(std::make_shared<Boxed<Value>>(std::move(value)));
}

} // namespace KeloBridge

/// The same as `KELO_STANDS_FOR` for a C++ class that is a value.
#define KELO_STANDS_FOR_VALUE(Face, Value)                                                         \
    [[maybe_unused]] static Value &native(Face *face) {                                            \
        return held<Boxed<Value>>(face).value;                                                     \
    }                                                                                              \
    +(void)load {                                                                                  \
        registerClass<Boxed<Value>>(self);                                                         \
    }
