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
void registerClass(Class made, Test test);

template <class T>
void registerClass(Class made) {
    registerClass(made,
                  [](const Object &object) { return dynamic_cast<const T *>(&object) != nullptr; });
}

/// The nearest class that was registered: `one`, or one that it is derived from; `one` where none
/// was.
Class libraryClass(Class one);

/// Whether an object is of a class of the host's: another than `toObjC` would make for `native`.
bool isOfHost(KLBridged *made, const Object &native);
id adoptNative(KLBridged *made, const std::shared_ptr<Object> &native);

/// Deletes an object, before it the Objective-C one that stands for it: `dealloc` of a host's class
/// may use both.
template <class T>
struct Parting {
    void operator()(const T *native) const {
        native->deleteCompanion();
        delete native;
    }
};

/// The same for an object whose last shared pointer this is.
struct PartingFrom {
    std::shared_ptr<Object> last;

    void operator()(const Object *native) {
        native->deleteCompanion();
        last = nullptr;
    }
};

/// Lets an object that has just been allocated stand for `native`, which no other may stand for,
/// and returns it. Where the host's class may have a `dealloc` of its own, the native object goes
/// after that; one that makes shared pointers to itself sees to it by itself, as by `Parting`.
template <class T>
id adopt(KLBridged *made, const std::shared_ptr<T> &native) {
    constexpr bool sharesItself = requires {
        native->weak_from_this();
    };
    if (!sharesItself && made != nil && isOfHost(made, *native)) {
        return adoptNative(made, std::shared_ptr<Object>(native.get(), PartingFrom{native}));
    }
    return adoptNative(made, native);
}

/// The Objective-C object of `native`, autoreleased; nil for null. The one there is, or a new one
/// of the class that was registered for it. What stands for an object of the host's is that object.
id toObjC(const std::shared_ptr<Object> &native);

/// The C++ object that a bridged object stands for; null before an initialiser has been called. For
/// any other object one that stands for it, and is the same one while it is alive. Null for nil.
std::shared_ptr<Object> toNative(id object);

/// The Objective-C object of `native`, where a class of the host's overrides `method` of `base`;
/// nil otherwise.
id overriding(const Object &native, SEL method, Class base);

/// How many bridged objects Objective-C has references to.
std::size_t aliveCount();

/// Tells apart nil, an object that was never initialised and one of a class without a place.
[[noreturn]] void raiseWrongClass(id object);

/// Raises `NSInvalidArgumentException` for an object that stands for another already: an
/// initialiser was called twice.
void requireNew(KLBridged *made);

/// The C++ object, of class `T`; null for nil. An object of another class raises
/// `NSInvalidArgumentException`.
template <class T>
std::shared_ptr<T> toNative(id object) {
    auto typed = std::dynamic_pointer_cast<T>(toNative(object));
    if (object != nil && typed == nullptr) {
        raiseWrongClass(object);
    }
    return typed;
}

/// What `toNative` gives, without a pointer of its own. Null for an object that is none of the
/// bridge's.
Object *nativeAddress(id object);

/// The C++ object that a bridged object keeps alive. Nil and an object of another class raise
/// `NSInvalidArgumentException`.
template <class T>
T &held(KLBridged *object) {
    T *const typed = dynamic_cast<T *>(nativeAddress(object));
    if (typed == nullptr) {
        raiseWrongClass(object);
    }
    return *typed;
}

} // namespace KeloBridge
