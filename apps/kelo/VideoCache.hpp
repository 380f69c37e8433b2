#pragma once

#include <KeloAPI/files/FileManager.hpp>

#include <memory>
#include <string>

/// The directory that downloaded videos are kept in, in the user's data directory.
namespace KeloHost::VideoCache {

std::shared_ptr<KeloAPI::FileManager> manager();

/// Where it is, with a "/" at its end. Throws a `Failure` when there is no place for one.
std::string directory();

} // namespace KeloHost::VideoCache
