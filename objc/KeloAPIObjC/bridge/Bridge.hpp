#pragma once

#import <KeloAPIObjC/bridge/KLBridged.h>

#include <KeloAPI/base/Object.hpp>

#include <cstddef>
#include <memory>

/// Between the objects of both languages. Any thread.
namespace KeloBridge {

using KeloAPI::Object;

/// Whether an object is one of a C++ class.
using Test = bool (*)(const Object &object);

/// `made` stands for the objects of C++ class that `test` knows, unless a class that was made from
/// it knows them too. Called in `+load`.
void add(Class made, Test test);

template <class T>
void add(Class made) {
    add(made, [](const Object &object) { return dynamic_cast<const T *>(&object) != nullptr; });
}

/// The nearest class that was added: `one`, or one that it is derived from; `one` where none was.
Class libraryClass(Class one);

/// What stands in C++ for an Objective-C object and keeps it alive. `wrap` gives that very object.
class Foreign {
public:
    explicit Foreign(id object);
    Foreign(const Foreign &) = delete;
    Foreign &operator=(const Foreign &) = delete;
    virtual ~Foreign();
    id object() const { return _object; }

private:
    const id _object;
};

/// Makes what stands for an object; it is an `Object`, too.
using Stand = std::shared_ptr<Foreign> (*)(id object);

/// What classes that hosts derive from `made` override is asked: what `stand` makes stands for an
/// object of such a class, and is the same one while it is alive. Called in `+load`.
void addDerivable(Class made, Stand stand);

/// Lets an object that has just been allocated stand for `object`, which no other may stand for.
/// Returns it.
id hold(KLBridged *made, std::shared_ptr<Object> object);

/// The Objective-C object of `object`, autoreleased; nil for null. The one there is, or a new one
/// of the class that was added for it. An Objective-C object that came from `shared` is itself.
id wrap(std::shared_ptr<Object> object);

/// The C++ object that a bridged object stands for; for any other object one that stands for it,
/// and is the same one while it is alive. Null for nil. As long as it is held, an object of a class
/// that a host has derived stays itself: what `wrap` gives is that very object.
std::shared_ptr<Object> shared(id object);

/// The C++ object that a bridged object stands for, which does not keep that one alive whatever its
/// class is: for what is to be held weakly. Null for any other object.
std::shared_ptr<Object> sharedAlone(id object);

/// How many bridged objects are alive.
std::size_t aliveCount();

/// The C++ object, of class `T`; null for nil. An object of another class raises
/// `NSInvalidArgumentException`.
template <class T>
std::shared_ptr<T> shared(id object);

template <class T>
std::shared_ptr<T> sharedAlone(id object);

/// Tells apart nil, an object that was never initialised and one of a class without a place.
[[noreturn]] void raiseWrongClass(id object);

/// Raises `NSInvalidArgumentException` for an object that stands for another already: an
/// initialiser was called twice.
void requireNew(KLBridged *made);

template <class T>
std::shared_ptr<T> typedOrRaise(id object, const std::shared_ptr<Object> &crossed) {
    auto typed = std::dynamic_pointer_cast<T>(crossed);
    if (object != nil && typed == nullptr) {
        raiseWrongClass(object);
    }
    return typed;
}

template <class T>
std::shared_ptr<T> shared(id object) {
    return typedOrRaise<T>(object, shared(object));
}

template <class T>
std::shared_ptr<T> sharedAlone(id object) {
    return typedOrRaise<T>(object, sharedAlone(object));
}

/// The C++ object that a bridged object keeps alive. Nil and an object of another class raise
/// `NSInvalidArgumentException`.
template <class T>
T &held(KLBridged *object) {
    T *const typed = dynamic_cast<T *>(sharedAlone(static_cast<id>(object)).get());
    if (typed == nullptr) {
        raiseWrongClass(object);
    }
    return *typed;
}

} // namespace KeloBridge
