#include <KeloAPIObjC/bridge/Weak.hpp>

#include <mutex>
#include <unordered_map>
#include <utility>

namespace KeloBridge {

struct Weak::Watched {
    id object;
    std::shared_ptr<void> companion;
};

/// The objects that are watched. A reference is taken and the last one given up under one lock:
/// nobody takes one to an object that is just going.
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

std::shared_ptr<Watching::Watched> Watching::watch(id object) {
    const auto found = objects.find(object);
    if (found != objects.end()) {
        return found->second;
    }
    if (!class_isMetaClass(object_getClass(object))) { // a class never goes
        extend([object class]); // not the one that stands in for it while it is observed
    }
    auto watched = std::make_shared<Watched>(Watched{object, nullptr});
    objects.emplace(object, watched);
    return watched;
}

void Watching::extend(Class made) {
    SEL selector = @selector(release);
    const auto before = reinterpret_cast<Release>(
        reinterpret_cast<Function>(class_getMethodImplementation(made, selector)));
    if (before == &release) {
        return; // a class that it is derived from is watched
    }
    releases.emplace(made, before);
    Method method = class_getInstanceMethod(made, selector);
    const auto extended = reinterpret_cast<IMP>(reinterpret_cast<Function>(&release));
    // Only where the class has none of its own yet: an inherited one belongs to others, too.
    if (!class_addMethod(made, selector, extended, method_getTypeEncoding(method))) {
        method_setImplementation(method, extended);
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
    if ([object retainCount] == 1) {
        const auto found = here.objects.find(object);
        if (found != here.objects.end()) {
            found->second->object = nil;
            gone = std::move(found->second->companion);
            here.objects.erase(found);
        }
        lock.unlock(); // the object ends without the lock: what it does then is its own affair
    }
    const Step outer = std::exchange(step, Step{object, made});
    before(object, selector);
    step = outer;
}

Weak::Weak(id object) {
    if (object != nil) {
        const std::lock_guard lock(Watching::all().mutex);
        _watched = Watching::all().watch(object);
    }
}

id Weak::object() const {
    const std::lock_guard lock(Watching::all().mutex);
    return _watched == nullptr ? nil : [[_watched->object retain] autorelease];
}

std::shared_ptr<void> companion(id object, const std::function<std::shared_ptr<void>()> &make) {
    if (object == nil) {
        return nullptr;
    }
    const std::lock_guard lock(Watching::all().mutex);
    auto &known = Watching::all().watch(object)->companion;
    if (known == nullptr) {
        known = make();
    }
    return known;
}

} // namespace KeloBridge
