#import <KeloAPIObjC/bridge/KLBridged.h>

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Life.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

#include <mutex>
#include <unordered_map>
#include <vector>

using KeloBridge::Life;

static Life *&lifeIn(KLBridged *object);

@implementation KLBridged

+ (id)allocWithZone:(NSZone *)zone {
    KLBridged *made = [super allocWithZone:zone];
    made->_life = new Life(made);
    return made;
}

- (instancetype)init {
    KeloBridge::refuse(self, "init()");
}

- (void)encodeWithCoder:(NSCoder *)coder {
    KeloBridge::raiseNotArchived(self, coder);
}

- (instancetype)retain {
    lifeIn(self)->retain();
    return self;
}

- (oneway void)release {
    lifeIn(self)->release();
}

- (NSUInteger)retainCount {
    return lifeIn(self)->references();
}

static Life *&lifeIn(KLBridged *object) {
    return reinterpret_cast<Life *&>(object->_life);
}

@end

namespace KeloBridge {

namespace {

/// Stands in C++ for an object that is nothing to the C++ library, and keeps it.
class Foreign final : public Object {
public:
    explicit Foreign(id object)
        : _object([object retain]) {}
    ~Foreign() override;

    id object() const { return _object; }

private:
    const id _object;
};

/// What stands for which object.
struct Foreigners {
    std::mutex mutex;
    std::unordered_map<id, std::weak_ptr<Foreign>> known;
};

Foreigners &foreigners() {
    static Foreigners &instance = *new Foreigners; // objects go at any moment of the process's exit
    return instance;
}

Foreign::~Foreign() {
    {
        const std::lock_guard lock(foreigners().mutex);
        const auto found = foreigners().known.find(_object);
        // Another may already stand in its place.
        if (found != foreigners().known.end() && found->second.expired()) {
            foreigners().known.erase(found);
        }
    }
    const Pool pool;
    [_object release];
}

std::shared_ptr<Foreign> foreign(id object) {
    const auto made = std::make_shared<Foreign>(object); // no message is sent under the lock
    const std::lock_guard lock(foreigners().mutex);
    auto &slot = foreigners().known[object];
    if (auto known = slot.lock()) {
        return known;
    }
    slot = made;
    return made;
}

struct Registered {
    Class made;
    Test test;
};

/// Written while classes are loaded, read from then on.
std::vector<Registered> &registeredClasses() {
    static auto &instance = *new std::vector<Registered>;
    return instance;
}

Class classFor(const Object &native) {
    Class best = Nil;
    for (const Registered &one : registeredClasses()) {
        if ((best == Nil || [one.made isSubclassOfClass:best]) && one.test(native)) {
            best = one.made;
        }
    }
    return best == Nil ? [KLBridged class] : best;
}

/// Null for an object that is none of the bridge's.
Life *lifeOfBridged(id object) {
    Class root = [KLBridged class];
    Class one = object_getClass(object);
    while (one != Nil && one != root) {
        one = class_getSuperclass(one);
    }
    return one == Nil ? nullptr : lifeIn(object);
}

} // namespace

void registerClass(Class made, Test test) {
    registeredClasses().push_back({made, test});
}

Class libraryClass(Class one) {
    for (Class known = one; known != Nil; known = class_getSuperclass(known)) {
        for (const Registered &added : registeredClasses()) {
            if (added.made == known) {
                return known;
            }
        }
    }
    return one;
}

bool isOfHost(KLBridged *made, const Object &native) {
    return object_getClass(made) != classFor(native);
}

id adoptNative(KLBridged *made, const std::shared_ptr<Object> &native) {
    if (made == nil) {
        return nil;
    }
    requireNew(made);
    KeloAPI::require(lifeOf(*native) == nullptr, "one object stands for a native one");
    lifeIn(made)->adopt(native);
    return made;
}

id toObjC(const std::shared_ptr<Object> &native) {
    if (native == nullptr) {
        return nil;
    }
    if (const auto *foreigner = dynamic_cast<const Foreign *>(native.get())) {
        return [[foreigner->object() retain] autorelease];
    }
    Life *life = lifeOf(*native);
    if (life == nullptr) {
        KLBridged *const made = [classFor(*native) alloc];
        life = &lifeIn(made)->adopt(native);
        if (life->object() == made) {
            return [made autorelease];
        }
    }
    life->retain(native);
    return [life->object() autorelease];
}

std::shared_ptr<Object> toNative(id object) {
    if (object == nil) {
        return nullptr;
    }
    const Life *const life = lifeOfBridged(object);
    return life == nullptr ? foreign(object) : life->native();
}

Object *nativeAddress(id object) {
    const Life *const life = lifeOfBridged(object);
    return life == nullptr ? nullptr : life->address();
}

id overriding(const Object &native, SEL method, Class base) {
    const Life *const life = lifeOf(native);
    id object = life == nullptr ? nil : life->object();
    const bool overrides =
        [object methodForSelector:method] != [base instanceMethodForSelector:method];
    return object != nil && overrides ? [[object retain] autorelease] : nil;
}

void raiseWrongClass(id object) {
    if (object == nil) {
        [NSException raise:NSInvalidArgumentException format:@"nil has no place here"];
    }
    if (lifeOfBridged(object) != nullptr && nativeAddress(object) == nullptr) {
        [NSException raise:NSInvalidArgumentException
                    format:@"an object of class %@ was never initialised", [object class]];
    }
    [NSException raise:NSInvalidArgumentException
                format:@"an object of class %@ has no place here", [object class]];
    __builtin_unreachable();
}

void requireNew(KLBridged *made) {
    if (nativeAddress(made) != nullptr) {
        [NSException raise:NSInvalidArgumentException
                    format:@"an object of class %@ is initialised already", [made class]];
    }
}

} // namespace KeloBridge
