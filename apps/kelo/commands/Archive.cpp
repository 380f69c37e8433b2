#include "ArchiveFile.hpp"
#include "commands/Commands.hpp"
#include "FeedPost.hpp"
#include "RecordText.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <algorithm>

namespace KeloHost {

using namespace KeloAPI;

namespace {

using Model = std::shared_ptr<const Archivable>;
/// Keeps a model and ends the program; null for what is not there.
using Keep = std::function<void(const Model& model)>;

/// Reads one record, of which `part` is to be kept.
template <class Parser, class Part>
void keepPart(const HostPointer& host, const std::string& path, const Keep& keep, Part part) {
    readRecords(host, path, std::make_shared<Parser>(), [=](const auto& records) {
        keep(records.empty() ? nullptr : Model(part(records.front())));
    });
}

/// The service does not tell its size.
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
                                 [&](const auto& sound) { return sound->soundId() == id; });
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
                          "the service names no such " + kind + ": nothing is saved");
        }
        ArchiveFile::write(path, model);
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
    const ArchiveFile::Content content = ArchiveFile::read(arguments.text("FILE"));
    Parameters fields = content.fields;
    fields.emplace("class", content.className);
    Lines lines = linesOf(content.fields, "  ");
    lines.insert(lines.begin(), content.className);
    host->show(fields, lines);
}

} // namespace KeloHost
