#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/json/Parameters.hpp>

#include <memory>
#include <string>

namespace KeloHost {

/// Keeps models in files: archives that the phone platform reads, too.
namespace ArchiveFile {

/// What an archive holds: the name of the model's class, and the fields that archives keep of it.
struct Content {
    std::string className;
    KeloAPI::Parameters fields;
};

/// Writes the model's archive, in the place of a file that is there, or that a link leads to.
/// Throws a `Failure` when that cannot be done; a file that was there is then as it was.
void write(const std::string& path, const std::shared_ptr<const KeloAPI::Archivable>& model);

/// Reads what was written. Throws a `Failure` for a file that is no archive, or one of something
/// else.
Content read(const std::string& path);

} // namespace ArchiveFile

} // namespace KeloHost
