#include <KeloAPIObjC/bridge/RuntimeName.hpp>

#include <KeloAPI/base/Contract.hpp>

/// The runtime's own: lets a class be found by the name that it has now. NO where there is another
/// of that name.
extern "C" BOOL __objc_add_class_to_hash(Class made);

namespace KeloBridge {

namespace {

/// The head of a class in memory, which is part of the runtime's binary interface.
struct ClassLayout {
    Class metaclass;
    Class superclass;
    const char *name;
};

void rename(Class made, const char *name) {
    reinterpret_cast<ClassLayout *>(made)->name = name;
}

} // namespace

void nameAtRuntime(Class made, const char *name) {
    rename(object_getClass(static_cast<id>(made)), name);
    rename(made, name);
    KeloAPI::require(__objc_add_class_to_hash(made), "a runtime name is given once");
}

} // namespace KeloBridge
