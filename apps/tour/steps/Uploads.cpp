#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace KeloTour {

using namespace KeloAPI;

namespace {

using State = KLVideoUploadProcessingState;

constexpr std::size_t segments = 3;

/// The bytes at an address of the service.
std::string bytesAt(const std::string& address) {
    const auto file = std::filesystem::temp_directory_path() /
                      ("kelo-tour-" +
                       std::to_string(std::chrono::system_clock::now().time_since_epoch().count()));
    Inbox<std::optional<Error>> inbox;
    endpointAt(address)->download(
        URL::fileURL(file.string()),
        [slot = inbox.slot()](const URL&, std::optional<Error> error) { slot(std::move(error)); });
    const auto error = inbox.next();
    checkSuccess(error ? &*error : nullptr);
    std::ifstream stream(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    std::filesystem::remove(file);
    return bytes;
}

using UploadAnswer = std::pair<std::shared_ptr<KLVideoUpload>, std::optional<Error>>;

/// Makes one of the calls that answer with an upload.
template <class Call>
std::shared_ptr<KLVideoUpload> uploadOf(Call call) {
    Inbox<UploadAnswer> inbox;
    call(*LongformUploadEndpoint::create(),
         [slot = inbox.slot()](std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error) {
             slot({std::move(upload), std::move(error)});
         });
    const UploadAnswer answer = inbox.next();
    checkSuccess(answer.second ? &*answer.second : nullptr);
    check(answer.first != nullptr, "the answer holds no upload");
    return answer.first;
}

std::shared_ptr<KLVideoUpload> initiate(std::size_t bytes) {
    return uploadOf([&](auto& endpoint, auto completion) {
        endpoint.initiateUpload(static_cast<std::int64_t>(bytes), completion);
    });
}

std::shared_ptr<KLVideoUpload> finalize(const std::string& mediaId) {
    return uploadOf(
        [&](auto& endpoint, auto completion) { endpoint.finalizeUpload(mediaId, completion); });
}

std::shared_ptr<KLVideoUpload> status(const std::string& mediaId) {
    return uploadOf(
        [&](auto& endpoint, auto completion) { endpoint.checkStatus(mediaId, completion); });
}

/// Sends all segments together, the last one first.
void sendSegments(const std::string& mediaId, const std::string& bytes) {
    const std::size_t size = bytes.size() / segments + 1;
    Inbox<std::optional<Error>> inbox;
    for (std::size_t index = segments; index-- > 0;) {
        LongformUploadEndpoint::create()->uploadSegment(
            mediaId, Data(bytes.substr(index * size, size)), static_cast<std::int64_t>(index),
            [slot = inbox.slot()](std::optional<Error> error) { slot(std::move(error)); });
    }
    for (std::size_t index = 0; index < segments; ++index) {
        const auto error = inbox.next();
        checkSuccess(error ? &*error : nullptr);
    }
    came(std::to_string(segments) + " segments were taken");
}

void tell(const KLVideoUploadProcessingInfo& info) {
    char percent[32];
    (void)std::snprintf(percent, sizeof percent, ", %.0f %%", info.progressPercent.value_or(0));
    came(std::string(rawValue(info.state())) + percent);
}

/// Asks as often as the service wants until the state is final, and returns that.
State follow(std::shared_ptr<KLVideoUpload> upload) {
    for (int asked = 0; asked < 100; ++asked) {
        const auto info = upload->processingInfo;
        check(info != nullptr, "the service says nothing of its work");
        tell(*info);
        if (info->state() == State::Succeeded || info->state() == State::Failed) {
            return info->state();
        }
        const std::chrono::duration<double> wait(info->checkAfterSeconds.value_or(1));
        MainQueue::main().runUntil([] { return false; },
                                   std::chrono::ceil<std::chrono::milliseconds>(wait));
        upload = status(upload->mediaId());
    }
    throw StepFailed("the processing does not end");
}

void uploadedVideo() {
    const auto post = newestPosts(1).front();
    check(post->videoUrl.has_value(), "the post has no video");
    const std::string bytes = bytesAt(*post->videoUrl);
    came("a video of " + std::to_string(bytes.size()) + " bytes, to be uploaded");
    const auto upload = initiate(bytes.size());
    check(upload->expireDate.has_value(), "the upload does not expire");
    came("the upload " + upload->mediaId());
    sendSegments(upload->mediaId(), bytes);
    const auto ended = finalize(upload->mediaId());
    check(ended->size == static_cast<std::int64_t>(bytes.size()), "the service has another size");
    check(follow(ended) == State::Succeeded, "that is another state");
    check(bytesAt("media/longforms/" + upload->mediaId() + ".mp4") == bytes,
          "the service serves other bytes");
    note("the service serves the bytes that were sent");
}

void gapInAnUpload() {
    const std::string bytes = "no video at all";
    const auto upload = initiate(bytes.size());
    Inbox<UploadAnswer> inbox;
    LongformUploadEndpoint::create()->finalizeUpload(
        upload->mediaId(),
        [slot = inbox.slot()](std::shared_ptr<KLVideoUpload> answer, std::optional<Error> error) {
            slot({std::move(answer), std::move(error)});
        });
    const UploadAnswer refused = inbox.next();
    check(refused.first == nullptr && refused.second,
          "the service took an upload without segments");
    came(refused.second->localizedDescription());
    sendSegments(upload->mediaId(), bytes);
    check(follow(finalize(upload->mediaId())) == State::Failed, "that is another state");
}

} // namespace

void tourUploads(Tour& tour) {
    tour.step("A long-form video in segments, followed until it is served", uploadedVideo);
    tour.step("An upload with nothing in it, and one of what is no video", gapInAnUpload);
}

} // namespace KeloTour
