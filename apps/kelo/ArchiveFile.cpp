#include "ArchiveFile.hpp"

#include "Failure.hpp"
#include "JsonFields.hpp"
#include "TextWidth.hpp"

#include <KeloAPI/loops/LoopData.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPI/platform/archive/KeyedArchiver.hpp>
#include <KeloAPI/platform/archive/KeyedUnarchiver.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

namespace KeloHost::ArchiveFile {

using namespace KeloAPI;

namespace {

/// More than an archive may have.
constexpr std::uintmax_t mostBytes = std::uintmax_t{64} << 20U;

Failure failure(const std::string& what, const std::string& path, const std::string& why) {
    return {ExitCode::Failed, what + " " + printable(path) + ": " + why};
}

template <class T>
std::optional<Parameters> fieldsIn(const Data& archive) {
    const auto model = KeyedUnarchiver::unarchive<T>(archive);
    return model ? std::optional(fieldsOf(*model)) : std::nullopt;
}

/// The same, without fields that archives do not keep.
template <class T>
std::optional<Parameters> keptFieldsIn(const Data& archive,
                                       std::initializer_list<const char*> lost) {
    auto fields = fieldsIn<T>(archive);
    for (const char* field : lost) {
        if (fields) {
            fields->erase(field);
        }
    }
    return fields;
}

std::optional<Parameters> channelIn(const Data& archive) {
    return keptFieldsIn<KLChannel>(archive, {"exploreIconRetinaUrl", "following",
                                             "vanityPathSuffix", "timelineData", "showRecent"});
}

std::optional<Parameters> tagIn(const Data& archive) {
    return keptFieldsIn<KLTag>(archive, {"count"});
}

struct Kind {
    std::string_view className;
    std::optional<Parameters> (*fields)(const Data& archive);
};

constexpr std::array kinds = {
    Kind{KLChannel::archivedClassName, channelIn},
    Kind{KLEntity::archivedClassName, fieldsIn<KLEntity>},
    Kind{KLTag::archivedClassName, tagIn},
    Kind{KLVenue::archivedClassName, fieldsIn<KLVenue>},
    Kind{KLVenueCategory::archivedClassName, fieldsIn<KLVenueCategory>},
    Kind{LoopData::archivedClassName, fieldsIn<LoopData>},
    Kind{PostThumbnail::archivedClassName, fieldsIn<PostThumbnail>},
    Kind{SoundboardSound::archivedClassName, fieldsIn<SoundboardSound>},
};

std::string contentsOf(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() != std::filesystem::file_type::regular) {
        throw failure("cannot read", path, error ? error.message() : "it is no file");
    }
    if (std::filesystem::file_size(path, error) > mostBytes) {
        throw failure("cannot read", path, "it is too large for an archive");
    }
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        throw failure("cannot read", path, std::strerror(errno));
    }
    return bytes;
}

} // namespace

void write(const std::string& path, const std::shared_ptr<const Archivable>& model) {
    const Data archive = KeyedArchiver::archivedData(model);
    const std::string beside = path + ".new";
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    file.write(archive.text().data(), static_cast<std::streamsize>(archive.size()));
    file.close();
    if (!file || std::rename(beside.c_str(), path.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        std::remove(beside.c_str());
        throw failure("cannot write", path, reason);
    }
}

Content read(const std::string& path) {
    const Data archive(contentsOf(path));
    const auto className = KeyedUnarchiver::rootClassName(archive);
    if (!className) {
        throw failure("cannot read", path, "it is no archive of a model");
    }
    const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                   [&](const Kind& one) { return one.className == *className; });
    if (kind == kinds.end()) {
        throw failure("cannot read", path,
                      "it is an archive of " + printable(*className) + ", which is unknown here");
    }
    auto fields = kind->fields(archive);
    if (!fields) {
        throw failure("cannot read", path,
                      "something is missing that every " + *className + " has");
    }
    return {*className, *std::move(fields)};
}

} // namespace KeloHost::ArchiveFile
