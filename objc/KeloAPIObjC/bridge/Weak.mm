#include <KeloAPIObjC/bridge/Weak.hpp>

#include <mutex>
#include <unordered_map>
#include <utility>

namespace KeloBridge {

struct Weak::Watched {
    /// How the references of the object are counted: a class has none.
    enum class Counting { None, ByFoundation, ByItself };

    id object;
    Counting counting;
    std::shared_ptr<void> companion;

    void retain() const;
    bool hasOneReference() const;
};

/// The objects that are watched. References are taken and given up under one lock, but for what the
/// last one ends: nobody takes one to an object that is just going. Under it no message is sent but
/// to an object that counts its references by itself, or has a `release` of its own.
struct Watching {
    using Release = void (*)(id, SEL);
    using Watched = Weak::Watched;
    /// Any function, by way of which others are cast.
    using Function = void (*)();

    std::recursive_mutex mutex;
    std::unordered_map<id, std::shared_ptr<Watched>> objects;
    /// The `release` that a class had before.
    std::unordered_map<Class, Release> releases;

    static Watching &all() {
        static Watching &instance = *new Watching; // objects go at any moment of the exit
        return instance;
    }

    std::shared_ptr<Watched> watch(id object);
    void extend(Class made);
    Class extendedFrom(Class made) const;
    static void release(id object, SEL selector);
};

static Watching::Function functionOf(Class made, SEL selector) {
    return reinterpret_cast<Watching::Function>(class_getMethodImplementation(made, selector));
}

static Watching::Watched::Counting countingOf(id object) {
    using Counting = Watching::Watched::Counting;
    Class made = object_getClass(object);
    if (class_isMetaClass(made)) {
        return Counting::None;
    }
    for (SEL selector : { @selector(retain), @selector(retainCount) }) {
        if (functionOf(made, selector) != functionOf([NSObject class], selector)) {
            return Counting::ByItself;
        }
    }
    return Counting::ByFoundation;
}

void Weak::Watched::retain() const {
    if (counting == Counting::ByFoundation) {
        NSIncrementExtraRefCount(object);
    } else if (counting == Counting::ByItself) {
        [object retain];
    }
}

bool Weak::Watched::hasOneReference() const {
    return counting == Counting::ByFoundation ? NSExtraRefCount(object) == 0
                                              : [object retainCount] == 1;
}

std::shared_ptr<Watching::Watched> Watching::watch(id object) {
    auto made = std::make_shared<Watched>(Watched{object, countingOf(object), nullptr});
    if (made->counting != Watched::Counting::None) { // a class never goes
        extend([object class]); // not the one that stands in for it while it is observed
    }
    const std::lock_guard lock(mutex);
    return objects.emplace(object, std::move(made)).first->second;
}

/// Asks the runtime, which has a lock of its own, without ours. Threads that do so at the same time
/// do the same.
void Watching::extend(Class made) {
    SEL selector = @selector(release);
    const auto before = reinterpret_cast<Release>(functionOf(made, selector));
    if (before == &release) {
        return; // a class that it is derived from is watched
    }
    {
        const std::lock_guard lock(mutex);
        releases.emplace(made, before);
    }
    const char *types = method_getTypeEncoding(class_getInstanceMethod(made, selector));
    const auto extended = reinterpret_cast<IMP>(reinterpret_cast<Function>(&release));
    // Only where the class has none of its own yet: an inherited one belongs to others, too.
    if (!class_addMethod(made, selector, extended, types)) {
        method_setImplementation(class_getInstanceMethod(made, selector), extended);
    }
}

/// The class nearest to `made` whose `release` was extended; Nil when there is none.
Class Watching::extendedFrom(Class made) const {
    while (made != Nil && releases.count(made) == 0) {
        made = class_getSuperclass(made);
    }
    return made;
}

void Watching::release(id object, SEL selector) {
    // Where a class's own `release` calls its superclass's, which is extended as well, that one
    // goes on from there.
    struct Step {
        id object;
        Class made;
    };
    static thread_local Step step = {nil, Nil};

    Watching &here = all();
    std::unique_lock lock(here.mutex);
    Class made = Nil;
    if (step.object == object) {
        made = here.extendedFrom(class_getSuperclass(step.made));
    }
    if (made == Nil) {
        made = here.extendedFrom(object_getClass(object));
    }
    const Release before = here.releases.at(made);
    std::shared_ptr<void> gone; // the companion, which may hold what watches the object
    const auto found = here.objects.find(object);
    const bool isWatched = found != here.objects.end();
    const bool isLast = isWatched && found->second->hasOneReference();
    if (isLast) {
        found->second->object = nil;
        gone = std::move(found->second->companion);
        here.objects.erase(found);
    }
    // The object ends without the lock: what it does then is its own affair. Two references that
    // are given up at a time go one after the other, or neither would be the last.
    if (isLast || !isWatched) {
        lock.unlock();
    }
    const Step outer = std::exchange(step, Step{object, made});
    before(object, selector);
    step = outer;
}

Weak::Weak(id object) {
    if (object != nil) {
        _watched = Watching::all().watch(object);
    }
}

id Weak::object() const {
    if (_watched == nullptr) {
        return nil;
    }
    std::unique_lock lock(Watching::all().mutex);
    id object = _watched->object;
    if (object != nil) {
        _watched->retain();
    }
    lock.unlock();
    return [object autorelease];
}

std::shared_ptr<void> companion(id object, const std::function<std::shared_ptr<void>()> &make) {
    if (object == nil) {
        return nullptr;
    }
    const auto watched = Watching::all().watch(object);
    const auto made = make();
    const std::lock_guard lock(Watching::all().mutex);
    if (watched->companion == nullptr) {
        watched->companion = made;
    }
    return watched->companion;
}

} // namespace KeloBridge
