#include <KeloAPIObjC/bridge/RuntimeName.hpp>

#include <KeloAPI/base/Contract.hpp>

#include <unordered_map>

namespace KeloBridge {

namespace {

/// Written while classes are loaded, read from then on.
std::unordered_map<Class, Class> &namedClasses() {
    static auto &instance = *new std::unordered_map<Class, Class>;
    return instance;
}

} // namespace

void nameAtRuntime(Class made, const char *name) {
    Class named = objc_allocateClassPair(made, name, 0);
    KeloAPI::require(named != Nil, "a runtime name is given once");
    objc_registerClassPair(named);
    namedClasses().emplace(made, named);
}

Class instanceClass(Class made) {
    const auto found = namedClasses().find(made);
    return found == namedClasses().end() ? made : found->second;
}

} // namespace KeloBridge
