// Uploads a long video in segments and follows the service's work on it to the end.
//
//     example-uploads FILE.mp4
#include "ExampleHost.hpp"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <iterator>
#include <thread>

using namespace KeloAPI;

namespace {

constexpr std::size_t segmentSize = 256 << 10;

/// Runs the main queue until a call has ended, as a command-line program may. Null after an error.
std::shared_ptr<KLVideoUpload>
ended(const std::function<void(LongformUploadEndpoint::Completion completion)>& call) {
    bool isDone = false;
    std::shared_ptr<KLVideoUpload> result;
    call([&](const std::shared_ptr<KLVideoUpload>& upload, const std::optional<Error>& error) {
        if (error) {
            std::cerr << error->localizedDescription() << '\n';
        }
        result = upload;
        isDone = true;
        MainQueue::main().stop();
    });
    while (!isDone) {
        MainQueue::main().run();
    }
    return result;
}

/// Sends the file's segments together, each through an endpoint of its own. False when one failed.
bool sendSegments(const std::string& mediaId, const std::string& file) {
    std::size_t underWay = 0;
    bool isComplete = true;
    for (std::size_t at = 0; at < file.size(); at += segmentSize) {
        ++underWay;
        const auto request = LongformUploadEndpoint::create()->uploadSegment(
            mediaId, Data(file.substr(at, segmentSize)),
            static_cast<std::int64_t>(at / segmentSize), [&](const std::optional<Error>& error) {
                isComplete = isComplete && !error;
                --underWay;
                MainQueue::main().stop();
            });
        request->setProgressHandler([](EndpointRequest&, double fraction) {
            std::clog << static_cast<int>(fraction * 100) << " %\n";
        });
    }
    while (underWay > 0) {
        MainQueue::main().run();
    }
    return isComplete;
}

/// Asks how far the service is, as often as it wants to be asked.
std::shared_ptr<KLVideoUpload> processed(std::shared_ptr<KLVideoUpload> upload) {
    using State = KLVideoUploadProcessingState;
    while (upload && upload->processingInfo) {
        const auto& info = *upload->processingInfo;
        if (info.state == State::Succeeded || info.state == State::Failed) {
            break;
        }
        // A program with a loop sets a timer instead.
        const double seconds = std::clamp(info.checkAfterSeconds.value_or(1), 0.0, 60.0);
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        upload = ended([&](auto completion) {
            LongformUploadEndpoint::create()->checkStatus(upload->mediaId, completion);
        });
    }
    return upload;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "example-uploads FILE.mp4\n";
        return 2;
    }
    std::ifstream stream(argv[1], std::ios::binary);
    const std::string file(std::istreambuf_iterator<char>(stream), {});
    ExampleHost::use();

    auto upload = ended([&](auto completion) {
        LongformUploadEndpoint::create()->initiateUpload(static_cast<std::int64_t>(file.size()),
                                                         completion);
    });
    if (!upload || !sendSegments(upload->mediaId, file)) {
        return 1;
    }
    upload = processed(ended([&](auto completion) {
        LongformUploadEndpoint::create()->finalizeUpload(upload->mediaId, completion);
    }));
    if (!upload || !upload->processingInfo) {
        return 1;
    }
    const auto state = upload->processingInfo->state;
    std::cout << rawValue(state) << '\n';
    return state == KLVideoUploadProcessingState::Succeeded ? 0 : 1;
}
