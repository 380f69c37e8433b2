// Downloads the videos of a feed's first page into a cache, the first of them first, and trims the
// cache to a number of files.
//
//     example-downloads FOLDER FILES
#include "ExampleHost.hpp"

#include <cstdlib>
#include <iostream>

using namespace KeloAPI;

namespace {

/// The app's cache of videos.
std::shared_ptr<FileManager> videoCache() {
    return FileManager::sharedGroupManager("/videos/");
}

/// Requests the post's video, or finds it in the cache. `done` is told where the file is.
void fetchVideo(const KLWatchPost& post, QueuePriority priority,
                std::function<void(const FileDownloadResult& result)> done) {
    const auto file = FileEndpoint::create(post.videoUrl.value_or(""), videoCache());
    const auto place = file->documentsFile();
    if (!place) {
        done(FileDownloadResult::Error{Error::withMessage("example", 1, "There is no cache.")});
        return;
    }
    file->setDownloadProgressHandler([](std::int64_t, std::int64_t received, std::int64_t all) {
        std::clog << received << " of " << all << " bytes\n";
    });
    FileQueue::withKey("videos")->download(file, *place, priority, std::move(done));
}

void fetchVideos(const TimelineSuccess& page, const std::function<void()>& done) {
    const auto left = std::make_shared<std::size_t>(page.posts.size());
    for (const auto& post : page.posts) {
        const bool isOnScreen = post == page.posts.front();
        fetchVideo(*post, isOnScreen ? QueuePriority::High : QueuePriority::Low,
                   [left, done](const FileDownloadResult& result) {
                       if (const auto* success = result.success()) {
                           std::cout << success->endpoint->localUrl()->filePath().value_or("")
                                     << '\n';
                       } else {
                           std::cerr << result.error()->localizedDescription() << '\n';
                       }
                       if (--*left == 0) {
                           done();
                       }
                   });
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "example-downloads FOLDER FILES\n";
        return 2;
    }
    ExampleHost::use();
    // Without this line the cache is in the application group's container.
    videoCache()->setDocumentsDirectory(std::string(argv[1]) + "/");
    const int files = static_cast<int>(std::strtol(argv[2], nullptr, 10));
    int exitCode = 0;
    TimelineEndpoint::create("popular")->fetch([&](const TimelineResult& result) {
        if (const Error* error = result.error()) {
            std::cerr << error->localizedDescription() << '\n';
            exitCode = 1;
            MainQueue::main().stop();
            return;
        }
        fetchVideos(*result.success(), [files] {
            videoCache()->cleanDirectory(files);
            MainQueue::main().stop();
        });
    });
    MainQueue::main().run();
    return exitCode;
}
