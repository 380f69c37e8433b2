#pragma once

#include "support/Awaited.hpp"
#include "support/ServiceTest.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <openssl/evp.h>

#include <cstdint>

namespace KeloAPI::testing {

/// A test that uploads long-form videos to the stand-in.
class UploadTest : public ServiceTest {
protected:
    struct Answer {
        std::shared_ptr<KLVideoUpload> upload;
        std::optional<Error> error;
    };
    /// What became of a segment: the error of the last completion, and how many there were.
    struct SegmentOutcome {
        std::optional<Error> error;
        int completions = 0;
    };
    using Outcome = std::shared_ptr<SegmentOutcome>;
    struct SentSegment {
        std::shared_ptr<EndpointRequest> handle;
        Outcome outcome;
    };

    UploadTest() {
        session->handleQueuedRetries(false); // what other tests of this process have left
        setProcessingTime(0);
    }

    void setProcessingTime(double seconds) {
        service.call("POST", "/_service/processing-time",
                     nlohmann::json{{"seconds", seconds}}.dump());
    }
    void setUploadRate(std::int64_t bytesPerSecond) {
        service.call("POST", "/_service/upload-rate",
                     nlohmann::json{{"bytesPerSecond", bytesPerSecond}}.dump());
    }

    /// Any bytes, NUL among them, the same at each call.
    static std::string anyBytes(std::size_t count) {
        std::string bytes(count, '\0');
        std::uint32_t state = 1;
        for (char& byte : bytes) {
            state = state * 1664525 + 1013904223;
            byte = static_cast<char>(state >> 24);
        }
        return bytes;
    }
    static std::string sha256(const std::string& bytes) {
        unsigned char hash[32];
        EVP_Digest(bytes.data(), bytes.size(), hash, nullptr, EVP_sha256(), nullptr);
        std::string text;
        for (const unsigned char byte : hash) {
            text += "0123456789abcdef"[byte >> 4];
            text += "0123456789abcdef"[byte & 15];
        }
        return text;
    }

    Answer initiate(std::size_t totalBytes) {
        return answerTo([&](auto completion) {
            endpoint->initiateUpload(static_cast<std::int64_t>(totalBytes), completion);
        });
    }
    std::string newUpload(std::size_t totalBytes) {
        const Answer answer = initiate(totalBytes);
        EXPECT_NE(answer.upload, nullptr);
        return answer.upload ? answer.upload->mediaId : "";
    }
    Answer finalize(const std::string& mediaId) {
        return answerTo([&](auto completion) { endpoint->finalizeUpload(mediaId, completion); });
    }
    Answer status(const std::string& mediaId) {
        return answerTo([&](auto completion) { endpoint->checkStatus(mediaId, completion); });
    }
    /// Sends a segment with an endpoint of its own.
    SentSegment start(const std::string& mediaId, const std::string& bytes, std::int64_t index) {
        const auto outcome = std::make_shared<SegmentOutcome>();
        auto handle = LongformUploadEndpoint::create()->uploadSegment(
            mediaId, Data(bytes), index, [outcome](std::optional<Error> error) {
                outcome->error = std::move(error);
                ++outcome->completions;
            });
        return {std::move(handle), outcome};
    }
    /// Sends a segment and waits for its first completion.
    std::optional<Error> segment(const std::string& mediaId, const std::string& bytes,
                                 std::int64_t index) {
        const Outcome outcome = start(mediaId, bytes, index).outcome;
        EXPECT_TRUE(runUntil([&] { return outcome->completions > 0; }));
        return outcome->error;
    }
    /// The segments that the stand-in has of an upload.
    nlohmann::json kept(const std::string& mediaId) {
        const auto uploads = service.call("GET", "/_service/uploads").at("uploads");
        for (const auto& upload : uploads) {
            if (upload.at("mediaId") == mediaId) {
                return upload.at("segments");
            }
        }
        return {};
    }

    /// The bytes at an address of the service.
    std::string fetched(const std::string& path) {
        const auto plain = Endpoint::create(session);
        plain->setPath(path);
        const auto [file, error] = awaited<URL, std::optional<Error>>([&](auto completion) {
            plain->download(URL::fileURL(folder.path("fetched")), completion);
        });
        EXPECT_FALSE(error) << path << ": " << error->description();
        return folder.read("fetched");
    }
    /// A real MP4 file.
    std::string video() {
        const auto page = fetch(TimelineEndpoint::create("editors-picks"));
        const auto url = page.success()->posts.at(0)->videoUrl;
        return fetched(url.value());
    }

    std::shared_ptr<LongformUploadEndpoint> endpoint = LongformUploadEndpoint::create();
    TemporaryFolder folder;

private:
    static Answer answerTo(const std::function<void(LongformUploadEndpoint::Completion)>& send) {
        auto [upload, error] = awaited<std::shared_ptr<KLVideoUpload>, std::optional<Error>>(send);
        return {std::move(upload), std::move(error)};
    }
};

} // namespace KeloAPI::testing
