#include "ArchiveFile.hpp"

#include "Failure.hpp"
#include "Fields.hpp"
#include "TextWidth.hpp"

#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace KeloHost::ArchiveFile {

using namespace KeloAPI;

namespace {

/// The most that is read of any archive.
constexpr std::uintmax_t mostBytes = std::uintmax_t{64} << 20U;

Failure failure(const std::string& what, const std::string& path, const std::string& why) {
    return {ExitCode::Failed, what + " " + printable(path) + ": " + why};
}

std::string reasonOf(int problem) {
    return problem == 0 ? "it cannot be read to its end" : std::strerror(problem);
}

struct Kind {
    std::string_view className;
    std::optional<Parameters> (*fields)(const Data& archive);
    /// Fields of the model that archives do not keep.
    std::vector<const char*> lost;
};

template <class T>
Kind kindOf(std::vector<const char*> lost = {}) {
    const auto fields = [](const Data& archive) {
        const auto model = KeyedUnarchiver::unarchive<T>(archive);
        return model ? std::optional(fieldsOf(*model)) : std::nullopt;
    };
    return {T::archivedClassName, fields, std::move(lost)};
}

std::vector<Kind> kinds() {
    return {kindOf<KLChannel>({"exploreIconRetinaUrl", "following", "vanityPathSuffix",
                               "timelineData", "showRecent"}),
            kindOf<KLEntity>(),
            kindOf<KLTag>({"count"}),
            kindOf<KLVenue>(),
            kindOf<KLVenueCategory>(),
            kindOf<LoopData>(),
            kindOf<PostThumbnail>(),
            kindOf<SoundboardSound>()};
}

std::string contentsOf(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() != std::filesystem::file_type::regular) {
        throw failure("cannot read", path, error ? error.message() : "it is no file");
    }
    const auto size = std::filesystem::file_size(path, error);
    if (!error && size > mostBytes) {
        throw failure("cannot read", path, "it is too large for an archive");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        throw failure("cannot read", path, reasonOf(errno));
    }
    return bytes;
}

/// The file that a path leads to, through links.
std::string target(const std::string& path) {
    std::error_code error;
    const auto real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

/// Writes a file that is not there yet, down to the disk. The error's number; 0 when it is written.
int writeNew(const std::string& path, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) {
        return errno;
    }
    int problem = 0;
    while (!bytes.empty() && problem == 0) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            problem = errno;
        }
    }
    if (problem == 0 && ::fsync(file) != 0) {
        problem = errno;
    }
    ::close(file);
    if (problem != 0) {
        ::unlink(path.c_str());
    }
    return problem;
}

} // namespace

void write(const std::string& path, const std::shared_ptr<const Archivable>& model) {
    const Data archive = KeyedArchiver::archivedData(model);
    const std::string place = target(path);
    const std::string beside = place + "." + std::to_string(::getpid()) + ".part";
    if (const int problem = writeNew(beside, archive.text()); problem != 0) {
        throw failure("cannot write", path, reasonOf(problem));
    }
    if (std::rename(beside.c_str(), place.c_str()) != 0) {
        const int problem = errno;
        ::unlink(beside.c_str());
        throw failure("cannot write", path, reasonOf(problem));
    }
}

Content read(const std::string& path) {
    const Data archive(contentsOf(path));
    const auto className = KeyedUnarchiver::rootClassName(archive);
    if (!className) {
        throw failure("cannot read", path, "it is no archive of a model");
    }
    const auto known = kinds();
    const auto kind = std::find_if(known.begin(), known.end(),
                                   [&](const Kind& one) { return one.className == *className; });
    if (kind == known.end()) {
        throw failure("cannot read", path,
                      "it is an archive of " + printable(*className) + ", which is unknown here");
    }
    auto fields = kind->fields(archive);
    if (!fields) {
        throw failure("cannot read", path,
                      "something is missing that every " + *className + " has");
    }
    for (const char* name : kind->lost) {
        fields->erase(name);
    }
    return {*className, *std::move(fields)};
}

} // namespace KeloHost::ArchiveFile
