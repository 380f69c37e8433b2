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
id wrapValue(Value value) {
    return wrap(std::make_shared<Boxed<Value>>(std::move(value)));
}

template <class Value>
Value &heldValue(KLBridged *object) {
    return held<Boxed<Value>>(object).value;
}

} // namespace KeloBridge
