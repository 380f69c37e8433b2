#include "commands/Commands.hpp"
#include "Feed.hpp"
#include "FileReplacement.hpp"
#include "Records.hpp"
#include "Text.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace KeloHost {

using namespace KeloAPI;

namespace {

using Model = std::shared_ptr<const Archivable>;

/// What an archive holds: the name of the model's class, and the fields that archives keep of it.
struct Content {
    std::string className;
    Parameters fields;
};

/// The most that is read of any archive.
constexpr std::uintmax_t mostBytes = std::uintmax_t{64} << 20U;

Failure failure(const std::string& what, const std::string& path, const std::string& why) {
    return {ExitCode::Failed, what + " " + printable(path) + ": " + why};
}

std::string reasonOf(int problem) {
    return problem == 0 ? "it cannot be read to the end" : std::strerror(problem);
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
        throw failure("cannot read", path, error ? error.message() : "it is not a file");
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

/// The path with its links resolved.
std::string target(const std::string& path) {
    std::error_code error;
    const auto real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

/// Writes the model's archive to a file, or to the one that a link leads to. An existing file stays
/// as it was when that fails.
void writeArchive(const std::string& path, const Model& model) {
    const Data archive = KeyedArchiver::archivedData(model);
    if (const int problem = replaceFile(target(path), archive.text(), 0666); problem != 0) {
        throw failure("cannot write", path, reasonOf(problem));
    }
}

/// Reads an archive that this program or a phone has written.
Content readArchive(const std::string& path) {
    const Data archive(contentsOf(path));
    const auto className = KeyedUnarchiver::rootClassName(archive);
    if (!className) {
        throw failure("cannot read", path, "it is not an archive of a model");
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
        throw failure("cannot read", path, "a field that every " + *className + " has is missing");
    }
    for (const char* name : kind->lost) {
        fields->erase(name);
    }
    return {*className, *std::move(fields)};
}

/// Saves a model and ends the program; null where the service has none.
using Keep = std::function<void(const Model& model)>;

/// Reads one record and saves the `part` of it.
template <class Parser, class Part>
void keepPart(const HostPointer& host, const std::string& path, const Keep& keep, Part part) {
    readRecords(host, path, std::make_shared<Parser>(), [=](const auto& records) {
        keep(records.empty() ? nullptr : Model(part(records.front())));
    });
}

/// The record does not give its size.
Model thumbnailOf(const FeedPost& post) {
    const auto url = URL::parse(post.post->thumbnailUrl.value_or(""));
    return url ? std::make_shared<PostThumbnail>(*url, 0, 0) : nullptr;
}

template <class Item>
Model firstOf(const std::vector<std::shared_ptr<Item>>& items) {
    return items.empty() ? nullptr : items.front();
}

void keepSound(const HostPointer& host, const std::string& id, const Keep& keep) {
    SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
        ->fetchSounds([=](const std::vector<std::shared_ptr<SoundboardSound>>& sounds,
                          const std::optional<Error>& error) {
            host->hear(error, [&] {
                const auto found =
                    std::find_if(sounds.begin(), sounds.end(),
                                 [&](const auto& sound) { return sound->soundId == id; });
                keep(found == sounds.end() ? nullptr : *found);
            });
        });
}

void keepLoops(const HostPointer& host, const Keep& keep) {
    MeEndpoint::create()->get([=](const MeResult& result) {
        host->hear(result.error(), [&] { keep(result.success()->user->loopData); });
    });
}

} // namespace

std::string checkSave(const Arguments& arguments) {
    const std::string kind = arguments.text("KIND");
    if (arguments.has("ID") != (kind == "loops")) {
        return "";
    }
    return kind == "loops" ? "ID: loops are the signed-in user's own" : "ID: needed for a " + kind;
}

void save(const HostPointer& host, const Arguments& arguments) {
    const std::string kind = arguments.text("KIND");
    const std::string id = arguments.text("ID");
    const Keep keep = [host, kind, path = arguments.text("FILE")](const Model& model) {
        if (model == nullptr) {
            throw Failure(ExitCode::Failed,
                          "the service has no such " + kind + ": nothing is saved");
        }
        writeArchive(path, model);
        host->showDone("saved " + kind + " in", path);
    };
    if (kind == "channel") {
        keepPart<KLChannelParser>(host, "channels/" + id, keep,
                                  [](const auto& channel) { return channel; });
    } else if (kind == "venue") {
        keepPart<KLFoursquareVenueParser>(host, "venues/" + id, keep,
                                          [](const auto& venue) { return venue; });
    } else if (kind == "category") {
        keepPart<KLFoursquareVenueParser>(host, "venues/" + id, keep,
                                          [](const auto& venue) { return venue->category; });
    } else if (kind == "sound") {
        keepSound(host, id, keep);
    } else if (kind == "loops") {
        keepLoops(host, keep);
    } else {
        keepPart<FeedPostParser>(host, "posts/" + id, keep, [kind](const auto& post) {
            return kind == "thumbnail" ? thumbnailOf(*post)
                   : kind == "tag"     ? firstOf(post->tags)
                                       : firstOf(post->entities);
        });
    }
}

void showFile(const HostPointer& host, const Arguments& arguments) {
    const Content content = readArchive(arguments.text("FILE"));
    Parameters fields = content.fields;
    fields.emplace("class", content.className);
    Lines lines = linesOf(content.fields, "  ");
    lines.insert(lines.begin(), content.className);
    host->show(fields, lines);
}

} // namespace KeloHost
