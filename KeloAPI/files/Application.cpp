#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/files/Application.hpp>

#include <cstdlib>
#include <mutex>
#include <utility>

namespace KeloAPI::Application {

namespace {

struct State {
    std::mutex mutex;
    std::optional<std::string> bundleIdentifier;
    GroupContainers groupContainers;
};

State& state() {
    static NeverDestroyed<State> instance;
    return *instance;
}

/// The value of a variable that names an absolute path; others are to be ignored.
std::optional<std::string> pathIn(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> userDataDirectory() {
    if (auto data = pathIn("XDG_DATA_HOME")) {
        return data;
    }
    const auto home = pathIn("HOME");
    return home ? std::optional(*home + "/.local/share") : std::nullopt;
}

} // namespace

std::optional<std::string> bundleIdentifier() {
    const std::lock_guard lock(state().mutex);
    return state().bundleIdentifier;
}

void setBundleIdentifier(std::optional<std::string> identifier) {
    const std::lock_guard lock(state().mutex);
    state().bundleIdentifier = std::move(identifier);
}

std::optional<URL> groupContainer(const std::string& groupIdentifier) {
    GroupContainers containers;
    {
        const std::lock_guard lock(state().mutex);
        containers = state().groupContainers;
    }
    if (containers) {
        return containers(groupIdentifier);
    }
    const auto directory = userDataDirectory();
    return directory ? std::optional(URL::fileURL(*directory + "/" + groupIdentifier))
                     : std::nullopt;
}

void setGroupContainers(GroupContainers containers) {
    const std::lock_guard lock(state().mutex);
    state().groupContainers.swap(containers);
}

} // namespace KeloAPI::Application
