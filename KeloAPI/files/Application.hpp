#pragma once

#include <KeloAPI/base/URL.hpp>

#include <functional>

/// What the system knows of the running application. A host sets what its system does not tell,
/// before it uses files. Usable from any thread.
namespace KeloAPI::Application {

/// The identifier of the application's main bundle, such as "org.example.loops"; absent until the
/// host sets one.
KELO_API std::optional<std::string> bundleIdentifier();
KELO_API void setBundleIdentifier(std::optional<std::string> identifier); ///< Absent takes it away.

/// Finds the container of an application group: a file URL, or none where the application has no
/// access to that group. Called on the thread that asks; it must not use what it is asked for.
using GroupContainers = std::function<std::optional<URL>(const std::string& groupIdentifier)>;

/// The directory that the applications and extensions of a group share. Unless the host says
/// otherwise, it is the one of the group's name in the user's data directory: $XDG_DATA_HOME, or
/// .local/share in $HOME; none without both. It need not exist.
KELO_API std::optional<URL> groupContainer(const std::string& groupIdentifier);

/// Replaces the way containers are found; an empty function restores the default.
KELO_API void setGroupContainers(GroupContainers containers);

} // namespace KeloAPI::Application
