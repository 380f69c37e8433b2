#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPI/json/Parameters.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KeloHost {

/// One file of the cache.
struct CachedFile {
    std::string name;
    std::uint64_t bytes = 0;
    KeloAPI::Date modified;
};

KeloAPI::Parameters fieldsOf(const CachedFile& file);

/// The directory that downloaded videos are kept in, in the user's data directory.
namespace VideoCache {

std::shared_ptr<KeloAPI::FileManager> manager();

/// Where it is, with a "/" at its end. Throws a `Failure` when there is no place for one.
std::string directory();

/// What is in it, newest first. Throws a `Failure` when it cannot be read.
std::vector<std::shared_ptr<CachedFile>> files();

/// Keeps the newest `count` files and one more. Throws a `Failure` when there is more than that
/// afterwards.
void trim(std::int64_t count);

} // namespace VideoCache

} // namespace KeloHost
