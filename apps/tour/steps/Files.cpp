#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"
#include "TemporaryFolder.hpp"

#include <KeloAPI/files/Application.hpp>
#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPI/files/KLVideoFileFormat.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace KeloTour {

using namespace KeloAPI;

namespace {

constexpr const char* relativePath = "/tour-videos/";

/// A container for the cache that goes with the object.
class TemporaryContainer {
public:
    TemporaryContainer() {
        Application::setGroupContainers(
            [this](const std::string&) { return URL::fileURL(_folder.path().string()); });
    }
    TemporaryContainer(const TemporaryContainer&) = delete;
    TemporaryContainer& operator=(const TemporaryContainer&) = delete;
    ~TemporaryContainer() {
        Application::setGroupContainers(nullptr);
        FileManager::sharedGroupManager(relativePath)->kill();
    }

private:
    TemporaryFolder _folder;
};

std::string fileNameIn(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// The files in the cache's directory, newest first.
std::vector<std::string> cachedNames() {
    const auto& directory = FileManager::sharedGroupManager(relativePath)->documentsDirectory();
    check(directory.has_value(), "there is no cache");
    std::vector<std::filesystem::directory_entry> entries(
        std::filesystem::directory_iterator(*directory), {});
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        return a.last_write_time() > b.last_write_time();
    });
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const auto& entry : entries) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + text;
    }
    return all;
}

/// A file, as new as if the application had just started.
std::shared_ptr<FileEndpoint> fileAt(const std::string& path) {
    return FileEndpoint::create(path, FileManager::sharedGroupManager(relativePath));
}

/// Asks the queue for a file at its place in the cache; the outcome goes to `inbox`.
void request(FileQueue& queue, const std::shared_ptr<FileEndpoint>& file, QueuePriority priority,
             Inbox<FileDownloadResult>& inbox) {
    queue.download(file, file->documentsFile().value(), priority,
                   [slot = inbox.slot()](const FileDownloadResult& result) { slot(result); });
}

/// The paths that were asked for, by the names of their files.
std::vector<std::string> fetchedSince(std::int64_t number) {
    std::vector<std::string> names;
    for (const auto& request : Control::requestsSince(number)) {
        names.push_back(fileNameIn(request.path));
    }
    return names;
}

class OffersParser final : public JsonParser<KLVideoUrlBitrateSettings> {
public:
    std::shared_ptr<KLVideoUrlBitrateSettings> parse(const JsonObject& json) const override {
        const auto [id, offers] = json.values("postId", "videoUrls");
        return std::make_shared<KLVideoUrlBitrateSettings>(
            KLVideoUrlBitrateSettingParser(parseId(id).value_or(""))
                .parseArray(offers.objects().value_or(JsonObjectList())));
    }
};

void chosenByBitrate() {
    const auto post = newestPosts(1).front();
    Inbox<Parsed<KLVideoUrlBitrateSettings>> inbox;
    send<OffersParser>(endpointAt("posts/" + *post->postId), inbox);
    const auto answer = inbox.next();
    checkSuccess(answer.error ? &*answer.error : nullptr);
    check(answer.items.size() == 1, "that is no post");
    const auto offers = answer.items.front()->settingsForFormat(KLVideoFileFormat::MP4);
    check(!offers.empty(), "nothing is offered");
    for (const auto& offer : offers) {
        came("from " + std::to_string(std::int64_t(offer->minBitrate())) + ": " +
             offer->remoteUrl().absoluteString() + ", known as " + offer->uniqueId());
    }
    for (const double bitrate : {100.0, 500.0, 5000.0}) {
        const auto chosen = answer.items.front()->settingForFormat(KLVideoFileFormat::MP4, bitrate);
        note("for a connection of " + std::to_string(std::int64_t(bitrate)) + ": " +
             fileNameIn(chosen->remoteUrl().absoluteString()));
        for (const auto& offer : offers) {
            const bool better =
                offer->minBitrate() > chosen->minBitrate() && offer->minBitrate() <= bitrate;
            check(!better, "a better file is offered");
        }
        check(chosen->minBitrate() <= bitrate || chosen == offers.front(), "that is too much");
    }
}

struct Wanted {
    std::string path;
    QueuePriority priority;
};

/// A page of videos, with the three priorities in turn.
std::vector<Wanted> pageOfVideos() {
    std::vector<Wanted> wanted;
    for (const auto& post : newestPosts(7)) {
        check(post->videoUrl.has_value(), "a post has no video");
        const auto priority = queuePriorityOf(static_cast<std::int64_t>(wanted.size() % 3));
        wanted.push_back({*post->videoUrl, priority.value()});
    }
    return wanted;
}

/// The first one is fetched at once; the others by their priority.
std::vector<std::string> expectedOrder(std::vector<Wanted> wanted) {
    std::stable_sort(wanted.begin() + 1, wanted.end(),
                     [](const Wanted& a, const Wanted& b) { return a.priority > b.priority; });
    std::vector<std::string> names;
    names.reserve(wanted.size());
    for (const Wanted& one : wanted) {
        names.push_back(fileNameIn(one.path));
    }
    return names;
}

void fetchedByPriority() {
    constexpr const char* priorities[] = {"low", "normal", "high"};
    const auto wanted = pageOfVideos();
    const std::int64_t before = Control::lastRequest();
    const auto queue = FileQueue::withKey("tour");
    Inbox<FileDownloadResult> inbox;
    // The first file takes a while, so that the others meet in the queue.
    Control::addFault(URL::parse(wanted.front().path)->path(),
                      {{"type", "delay"}, {"milliseconds", 500}});
    for (const Wanted& one : wanted) {
        note("wanted: " + fileNameIn(one.path) + ", " +
             priorities[static_cast<std::size_t>(one.priority)]);
        request(*queue, fileAt(one.path), one.priority, inbox);
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const FileDownloadResult result = inbox.next();
        checkSuccess(result.error());
        const auto place = result.success()->endpoint->localUrl();
        check(place && std::filesystem::file_size(*place->filePath()) > 1000, "the file is empty");
    }
    const auto order = fetchedSince(before);
    came("fetched in this order: " + joined(order));
    check(Control::allFaultsHappened(), "the first file did not take a while");
    check(order == expectedOrder(wanted), "that is another order");
    check(queue->queuedFiles().empty(), "something is left in the queue");
    check(cachedNames().size() == wanted.size(), "the cache holds something else");
}

void answeredFromTheCache() {
    const auto wanted = pageOfVideos();
    const std::int64_t before = Control::lastRequest();
    const auto queue = FileQueue::withKey("tour");
    Inbox<FileDownloadResult> inbox;
    for (const Wanted& one : wanted) {
        request(*queue, fileAt(one.path), one.priority, inbox);
        check(queue->queuedFiles().empty(), "the file was queued");
        const FileDownloadResult result = inbox.next();
        checkSuccess(result.error());
        came("at once: " + result.success()->endpoint->localUrl()->absoluteString());
    }
    const auto requests = Control::requestsSince(before);
    note(std::to_string(requests.size()) + " requests reached the service");
    check(requests.empty(), "the service was asked");
}

void trimmed() {
    const auto manager = FileManager::sharedGroupManager(relativePath);
    const auto before = cachedNames();
    check(before.size() == 7, "the cache is another one");
    // Files that came within one tick of the clock would be of the same age.
    auto date = std::filesystem::file_time_type::clock::now();
    for (const std::string& name : before) {
        std::filesystem::last_write_time(*manager->documentsDirectory() + name, date);
        date -= std::chrono::minutes(1);
    }
    manager->cleanDirectory(2);
    const auto kept = cachedNames();
    came("of " + std::to_string(before.size()) +
         " files, trimmed to 2 and one more: " + joined(kept));
    check(kept == std::vector<std::string>(before.begin(), before.begin() + 3),
          "others are kept than the newest");
}

void brokenOff() {
    const std::string path = *newestPosts(1).front()->videoUrl;
    Control::addFault(URL::parse(path)->path(), {{"type", "reset"}, {"afterBytes", 5000}});
    const auto file = fileAt(path);
    file->deleteFile();
    const auto before = cachedNames();
    const auto again = fileAt(path);
    for (const bool works : {false, true}) {
        Inbox<FileDownloadResult> inbox;
        again->download(again->documentsFile().value(),
                        [slot = inbox.slot()](const FileDownloadResult& result) { slot(result); });
        const FileDownloadResult result = inbox.next();
        check((result.success() != nullptr) == works, "that is another outcome");
        came(works ? "the whole file" : result.error()->description());
        check(cachedNames().size() == before.size() + (works ? 1 : 0), "there is litter");
    }
    check(Control::allFaultsHappened(), "the service did not break off");
}

} // namespace

void tourFiles(Tour& tour) {
    const TemporaryContainer container;
    tour.step("A post's video in several files: the bitrate chooses", chosenByBitrate);
    tour.step("A page of videos, fetched one after another by priority", fetchedByPriority);
    tour.step("The same page once more, from the cache", answeredFromTheCache);
    tour.step("A download that breaks off leaves nothing behind", brokenOff);
    FileQueue::withKey("tour")->kill();
    tour.step("The cache is trimmed", trimmed);
}

} // namespace KeloTour
