#import <KeloAPIObjC/bridge/KLBridged.h>

#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/RuntimeName.hpp>

#include <mutex>
#include <unordered_map>
#include <vector>

using KeloAPI::Object;
using KeloBridge::Foreign;

namespace {

/// What a bridged object keeps.
struct Held {
    std::shared_ptr<Object> object;
    /// Of a class that the host has derived: more than what `wrap` would make anew.
    bool derived;
};

struct Made {
    Class made;
    KeloBridge::Test test;
};

struct Derivable {
    Class made;
    KeloBridge::Stand stand;
};

/// What stands for what. Objects are found and let go under one lock: nobody finds an object whose
/// last reference is just going.
struct Pairs {
    std::recursive_mutex mutex;
    std::unordered_map<const Object *, KLBridged *> bridged;
    std::unordered_map<id, std::weak_ptr<Foreign>> foreign;
    std::vector<Made> classes;
    std::vector<Derivable> derivables;
};

Pairs &pairs() {
    static Pairs &instance = *new Pairs; // objects go at any moment of the process's exit
    return instance;
}

/// Stands for an object that is nothing to the C++ library.
class Plain final : public Object, public Foreign {
public:
    explicit Plain(id object)
        : Foreign(object) {}
    ~Plain() override;
};

Plain::~Plain() = default;

std::shared_ptr<Foreign> plain(id object) {
    return std::make_shared<Plain>(object);
}

/// Null for a class of which nothing but its C++ object is asked.
KeloBridge::Stand standFor(id object) {
    if (![object isKindOfClass:[KLBridged class]]) {
        return plain;
    }
    for (const Derivable &one : pairs().derivables) {
        if ([object isKindOfClass:one.made]) {
            return one.stand;
        }
    }
    return nullptr;
}

Class classFor(const Object &object) {
    Class best = Nil;
    for (const Made &one : pairs().classes) {
        if ((best == Nil || [one.made isSubclassOfClass:best]) && one.test(object)) {
            best = one.made;
        }
    }
    return best == Nil ? [KLBridged class] : best;
}

} // namespace

@implementation KLBridged

+ (id)allocWithZone:(NSZone *)zone {
    return NSAllocateObject(KeloBridge::instanceClass(self), 0, zone);
}

- (instancetype)init {
    KeloBridge::refuse(self, "init()");
}

- (void)encodeWithCoder:(NSCoder *)coder {
    KeloBridge::raiseNotArchived(self, coder);
}

- (oneway void)release {
    {
        const std::lock_guard lock(pairs().mutex);
        if (!NSDecrementExtraRefCountWasZero(self)) {
            return;
        }
        if (_held != nullptr) {
            pairs().bridged.erase(static_cast<Held *>(_held)->object.get());
        }
    }
    [self dealloc];
}

- (void)dealloc {
    delete static_cast<Held *>(_held);
    [super dealloc];
}

@end

namespace KeloBridge {

namespace {

/// Reads what the class keeps to itself.
void *&heldOf(KLBridged *object) {
    static const ptrdiff_t offset =
        ivar_getOffset(class_getInstanceVariable([KLBridged class], "_held"));
    return *reinterpret_cast<void **>(reinterpret_cast<char *>(object) + offset);
}

/// Null where it keeps nothing, and for an object of any other kind.
const Held *keptBy(id object) {
    return [object isKindOfClass:[KLBridged class]] ? static_cast<Held *>(heldOf(object)) : nullptr;
}

id keep(KLBridged *made, std::shared_ptr<Object> object, bool derived) {
    pairs().bridged.emplace(object.get(), made);
    heldOf(made) = new Held{std::move(object), derived};
    return made;
}

/// The C++ object, by way of the Objective-C one: that stays as long as this is held.
std::shared_ptr<Object> keeping(KLBridged *bridged, const std::shared_ptr<Object> &object) {
    const std::shared_ptr<void> kept(static_cast<void *>([bridged retain]), [](void *released) {
        const Pool pool;
        [static_cast<id>(released) release];
    });
    return {kept, object.get()};
}

} // namespace

Foreign::Foreign(id object)
    : _object([object retain]) {}

Foreign::~Foreign() {
    {
        const std::lock_guard lock(pairs().mutex);
        const auto found = pairs().foreign.find(_object);
        // Another may already stand in its place.
        if (found != pairs().foreign.end() && found->second.expired()) {
            pairs().foreign.erase(found);
        }
    }
    const Pool pool;
    [_object release];
}

void addDerivable(Class made, Stand stand) {
    const std::lock_guard lock(pairs().mutex);
    pairs().derivables.push_back({made, stand});
}

void add(Class made, Test test) {
    const std::lock_guard lock(pairs().mutex);
    pairs().classes.push_back({made, test});
}

Class libraryClass(Class one) {
    const std::lock_guard lock(pairs().mutex);
    for (Class known = one; known != Nil; known = class_getSuperclass(known)) {
        for (const Made &added : pairs().classes) {
            if (added.made == known) {
                return known;
            }
        }
    }
    return one;
}

id hold(KLBridged *made, std::shared_ptr<Object> object) {
    const std::lock_guard lock(pairs().mutex);
    const bool derived = object_getClass(made) != instanceClass(classFor(*object));
    return keep(made, std::move(object), derived);
}

id wrap(std::shared_ptr<Object> object) {
    if (object == nullptr) {
        return nil;
    }
    if (const auto foreign = std::dynamic_pointer_cast<Foreign>(object)) {
        return [[foreign->object() retain] autorelease];
    }
    const std::lock_guard lock(pairs().mutex);
    const auto found = pairs().bridged.find(object.get());
    if (found != pairs().bridged.end()) {
        return [[found->second retain] autorelease];
    }
    Class made = classFor(*object);
    return [keep([made alloc], std::move(object), false) autorelease];
}

std::shared_ptr<Object> shared(id object) {
    if (object == nil) {
        return nullptr;
    }
    const Held *const held = keptBy(object);
    if (held != nullptr && !held->derived) {
        return held->object;
    }
    const std::lock_guard lock(pairs().mutex);
    const Stand stand = standFor(object);
    if (stand == nullptr) {
        return held == nullptr ? nullptr : keeping(object, held->object);
    }
    std::weak_ptr<Foreign> &known = pairs().foreign[object];
    auto foreign = known.lock();
    if (foreign == nullptr) {
        foreign = stand(object);
        known = foreign;
    }
    return std::dynamic_pointer_cast<Object>(foreign);
}

std::shared_ptr<Object> sharedAlone(id object) {
    const Held *const held = keptBy(object);
    return held == nullptr ? nullptr : held->object;
}

std::size_t aliveCount() {
    const std::lock_guard lock(pairs().mutex);
    return pairs().bridged.size();
}

void raiseWrongClass(id object) {
    if (object == nil) {
        [NSException raise:NSInvalidArgumentException format:@"nil has no place here"];
    }
    if ([object isKindOfClass:[KLBridged class]] && keptBy(object) == nullptr) {
        [NSException raise:NSInvalidArgumentException
                    format:@"an object of class %@ was never initialised", [object class]];
    }
    [NSException raise:NSInvalidArgumentException
                format:@"an object of class %@ has no place here", [object class]];
    __builtin_unreachable();
}

void requireNew(KLBridged *made) {
    if (keptBy(made) != nullptr) {
        [NSException raise:NSInvalidArgumentException
                    format:@"an object of class %@ is initialised already", [made class]];
    }
}

} // namespace KeloBridge
