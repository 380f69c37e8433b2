#pragma once

#include "Output.hpp"

#include <KeloAPI/files/FileManager.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The directory that downloaded videos are kept in, in the user's data directory.
namespace KeloHost::VideoCache {

std::shared_ptr<KeloAPI::FileManager> manager();

/// Where it is, with a "/" at its end. Throws a `Failure` when there is no place for one.
std::string directory();

/// What is in it, newest first. Throws a `Failure` when it cannot be read.
std::vector<CachedFile> files();

/// Keeps the newest `count` files and one more. Throws a `Failure` when there is more than that
/// afterwards.
void trim(std::int64_t count);

} // namespace KeloHost::VideoCache
