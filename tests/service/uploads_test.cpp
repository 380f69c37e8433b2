#include "service/Encoding.hpp"
#include "service/media/MediaLibrary.hpp"
#include "service/media/Mp4Box.hpp"
#include "service/media/Mp4Check.hpp"
#include "service/store/UploadFolder.hpp"
#include "support/TestService.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace KeloServiceTest {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

std::string anyBytes(std::size_t count) {
    std::string bytes(count, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

std::string sha256(const std::string& bytes) {
    KeloService::Sha256 hash;
    hash.add(bytes);
    return hash.text();
}

std::int64_t peakBytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) {
            return std::stoll(line.substr(6)) * 1024;
        }
    }
    return 0;
}

class UploadsTest : public ServiceTest {
protected:
    UploadsTest() { setProcessingTime(0); }

    Reply initiate(const std::string& totalBytes, const std::string& more = "&mediaType=video/mp4",
                   const std::string& key = developmentKey) {
        return send("POST", "/upload/longform-videos?totalBytes=" + totalBytes + more, "", key);
    }
    std::string newUpload(std::size_t bytes) {
        return initiate(std::to_string(bytes)).data().at("mediaId");
    }
    static std::string at(const std::string& id) { return "/upload/longform-videos/" + id; }
    Reply segment(const std::string& id, const std::string& index, const std::string& bytes,
                  const std::string& key = developmentKey) {
        return send("PUT", at(id) + "?segmentIndex=" + index, bytes, key);
    }
    Reply finalize(const std::string& id, const std::string& key = developmentKey) {
        return send("POST", at(id), "", key);
    }
    Reply status(const std::string& id, const std::string& key = developmentKey) {
        return send("GET", at(id) + "/status", "", key);
    }
    void setProcessingTime(double seconds) {
        EXPECT_EQ(
            control("POST", "/_service/processing-time", {{"seconds", seconds}}).at("seconds"),
            seconds);
    }
    Json kept(const std::string& id) {
        const Json uploads = control("GET", "/_service/uploads").at("uploads");
        for (const Json& upload : uploads) {
            if (upload.at("mediaId") == id) {
                return upload;
            }
        }
        return {};
    }
    /// An upload that was made of these bytes.
    std::string uploaded(const std::string& bytes) {
        const std::string id = newUpload(bytes.size());
        EXPECT_EQ(segment(id, "0", bytes).status, 200);
        EXPECT_EQ(finalize(id).status, 200);
        return id;
    }
    static std::string mp4() { return KeloService::findVideo(7, 128, "/7.mp4").bytes; }
};

TEST_F(UploadsTest, IsServedAsItWasSent) {
    const std::string video = mp4();
    const auto begun = initiate(std::to_string(video.size()));
    EXPECT_EQ(begun.status, 200);
    EXPECT_EQ(begun.data().at("expiresAfterSecs"), 3600);
    const std::string id = begun.data().at("mediaId");
    const std::size_t part = video.size() / 3 + 1;
    for (const int index : {2, 0, 1}) {
        const auto reply = segment(id, std::to_string(index), video.substr(index * part, part));
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.json, Json({{"data", Json::object()}}));
    }
    const auto done = finalize(id);
    EXPECT_EQ(done.status, 200);
    EXPECT_EQ(done.data(),
              Json({{"mediaId", id},
                    {"size", video.size()},
                    {"processingInfo", {{"state", "succeeded"}, {"progressPercent", 100.0}}},
                    {"videoUrl", service.url() + "/media/longforms/" + id + ".mp4"}}));
    EXPECT_EQ(status(id).data(), done.data());
    const auto served = client.Get("/media/longforms/" + id + ".mp4");
    EXPECT_EQ(served->status, 200);
    EXPECT_EQ(served->get_header_value("Content-Type"), "video/mp4");
    EXPECT_TRUE(served->body == video);
}

TEST_F(UploadsTest, IsServedInRangesAcrossSegments) {
    const std::string video = mp4();
    const std::string id = newUpload(video.size());
    segment(id, "1", video.substr(0, 100));
    segment(id, "2", video.substr(100, 50));
    segment(id, "3", video.substr(150));
    ASSERT_EQ(finalize(id).status, 200);
    const std::string path = "/media/longforms/" + id + ".mp4";
    const auto part = client.Get(path, {{"Range", "bytes=90-199"}});
    EXPECT_EQ(part->status, 206);
    EXPECT_EQ(part->get_header_value("Content-Range"),
              "bytes 90-199/" + std::to_string(video.size()));
    EXPECT_TRUE(part->body == video.substr(90, 110));
    EXPECT_TRUE(client.Get(path, {{"Range", "bytes=-7"}})->body == video.substr(video.size() - 7));
    const auto beyond =
        client.Get(path, {{"Range", "bytes=" + std::to_string(video.size()) + "-"}});
    EXPECT_EQ(beyond->status, 416);
    const auto head = client.Head(path);
    EXPECT_EQ(head->get_header_value("Content-Length"), std::to_string(video.size()));
    RawClient raw = rawClient();
    raw.send("GET " + path + " HTTP/1.1\r\nConnection: close\r\n\r\n");
    EXPECT_TRUE(raw.readAll().bytes.ends_with(video));
    const std::string tag = head->get_header_value("ETag");
    EXPECT_EQ(client.Get(path, {{"Range", "bytes=0-0"}, {"If-Range", tag}})->status, 206);
    EXPECT_EQ(client.Get(path, {{"Range", "bytes=0-0"}, {"If-Range", "\"x\""}})->status, 200);
}

TEST_F(UploadsTest, TheLaterSegmentReplacesTheEarlier) {
    const std::string video = mp4();
    const std::string id = newUpload(video.size());
    EXPECT_EQ(segment(id, "0", anyBytes(video.size())).status, 200);
    EXPECT_EQ(segment(id, "0", video).status, 200);
    EXPECT_EQ(kept(id).at("segments"), Json::array({{{"index", 0}, {"bytes", video.size()}}}));
    const Json told = status(id).data();
    EXPECT_EQ(told.at("size"), video.size());
    EXPECT_FALSE(told.contains("processingInfo"));
    EXPECT_GT(told.at("expiresAfterSecs"), 3590);
    EXPECT_LE(told.at("expiresAfterSecs"), 3600);
    ASSERT_EQ(finalize(id).status, 200);
    EXPECT_TRUE(client.Get("/media/longforms/" + id + ".mp4")->body == video);
}

TEST_F(UploadsTest, WhatIsMissingIsNamedAndLeavesTheSessionOpen) {
    const std::string video = mp4();
    const std::string id = newUpload(video.size());
    EXPECT_EQ(finalize(id).error(), "The upload has no segments");
    segment(id, "0", video.substr(0, 10));
    segment(id, "2", video.substr(20));
    EXPECT_EQ(finalize(id).error(), "Segment 1 is missing");
    segment(id, "1", video.substr(10, 9));
    const Reply refused = finalize(id);
    EXPECT_EQ(refused.status, 400);
    EXPECT_EQ(refused.code(), 400);
    EXPECT_EQ(refused.error(), "The segments have " + std::to_string(video.size() - 1) +
                                   " bytes, not the " + std::to_string(video.size()) +
                                   " that were announced");
    segment(id, "1", video.substr(10, 10));
    EXPECT_EQ(finalize(id).status, 200);
}

TEST_F(UploadsTest, TakesNoSegmentsOnceFinalized) {
    const std::string id = newUpload(3);
    segment(id, "2", "c");
    EXPECT_EQ(finalize(id).error(), "Segment 0 is missing");
    segment(id, "1", "ab"); // segments count from one, too
    EXPECT_EQ(finalize(id).status, 200);
    const Reply refused = segment(id, "3", "d");
    EXPECT_EQ(refused.status, 409);
    EXPECT_EQ(refused.error(), "The upload takes no segments any more");
    EXPECT_EQ(finalize(id).status, 200);
    EXPECT_EQ(kept(id).at("segments").size(), 2U);
}

TEST_F(UploadsTest, IsNotServedBeforeItIsProcessed) {
    setProcessingTime(1000);
    const std::string id = uploaded(mp4());
    EXPECT_EQ(status(id).data().at("processingInfo"),
              Json({{"state", "pending"}, {"progressPercent", 0.0}, {"checkAfterSecs", 5.0}}));
    EXPECT_FALSE(status(id).data().contains("videoUrl"));
    EXPECT_EQ(client.Get("/media/longforms/" + id + ".mp4")->status, 404);
}

TEST_F(UploadsTest, WhatIsNoVideoFails) {
    for (const std::string& bytes : {std::string("no video"), mp4() + "x"}) {
        const std::string id = uploaded(bytes);
        EXPECT_EQ(status(id).data().at("processingInfo"), Json({{"state", "failed"}}));
        EXPECT_FALSE(status(id).data().contains("videoUrl"));
        EXPECT_EQ(client.Get("/media/longforms/" + id + ".mp4")->status, 404);
    }
}

TEST_F(UploadsTest, AnUploadHasAnOwner) {
    const std::string id = newUpload(4);
    const std::string other = signIn("kofi");
    for (const Reply& reply :
         {segment(id, "0", "abcd", other), finalize(id, other), status(id, other),
          segment("unknown", "0", "abcd"), finalize("unknown"), status("unknown")}) {
        EXPECT_EQ(reply.status, 404);
        EXPECT_EQ(reply.error(), "There is no such upload");
    }
    for (const Reply& reply : {initiate("4", "&mediaType=video/mp4", ""),
                               segment(id, "0", "abcd", ""), finalize(id, ""), status(id, "")}) {
        EXPECT_EQ(reply.status, 401);
        EXPECT_EQ(reply.code(), 100);
    }
    control("POST", "/_service/sessions/" + other + "/expire");
    EXPECT_EQ(segment(id, "0", "abcd", other).code(), 103);
    EXPECT_EQ(kept(id).at("segments").size(), 0U);
}

TEST_F(UploadsTest, AnExpiredUploadIsGone) {
    const std::string id = newUpload(4);
    segment(id, "0", "abcd");
    control("POST", "/_service/uploads/" + id + "/expire");
    for (const Reply& reply : {segment(id, "0", "abcd"), finalize(id), status(id)}) {
        EXPECT_EQ(reply.status, 410);
        EXPECT_EQ(reply.error(), "The upload has expired");
    }
    newUpload(4); // throws away what expired
    EXPECT_EQ(kept(id).at("segments").size(), 0U);
    const std::string finished = uploaded("abcd");
    control("POST", "/_service/uploads/" + finished + "/expire");
    EXPECT_EQ(status(finished).status, 200);
}

TEST_F(UploadsTest, TheSettingDecidesWhenItExpires) {
    KeloService::Settings brief = settings();
    brief.uploadExpirySeconds = 0;
    KeloService::Service briefService(brief);
    briefService.start();
    Client own(briefService.port());
    const httplib::Headers key{{sessionHeader, developmentKey}};
    const auto begun = own.Post("/upload/longform-videos?totalBytes=4&mediaType=video/mp4", key);
    const Json data = Json::parse(begun->body).at("data");
    EXPECT_EQ(data.at("expiresAfterSecs"), 0);
    EXPECT_EQ(own.Get(at(data.at("mediaId")) + "/status", key)->status, 410);
}

TEST_F(UploadsTest, RefusesBadRequests) {
    for (const char* bytes : {"", "0", "-1", "1.5", "many", "1099511627777"}) {
        EXPECT_EQ(initiate(bytes).status, 400) << bytes;
    }
    for (const char* type : {"", "&mediaType=", "&mediaType=video/webm"}) {
        EXPECT_EQ(initiate("4", type).error(), "mediaType must be video/mp4") << type;
    }
    const std::string id = newUpload(4);
    for (const char* index : {"", "-1", "x", "1000001"}) {
        EXPECT_EQ(segment(id, index, "abcd").status, 400) << index;
    }
    EXPECT_EQ(segment(id, "0", "").error(), "The segment is empty");
    EXPECT_EQ(segment(id, "0", "abcde").error(),
              "The segment is larger than the video was said to be");
    EXPECT_EQ(client.Delete(at(id))->status, 405);
    EXPECT_EQ(kept(id).at("segments").size(), 0U);
}

TEST_F(UploadsTest, ALargeSegmentIsNotHeldInMemory) {
    const std::size_t size = std::size_t{64} << 20;
    const std::string bytes = anyBytes(size);
    const std::string id = newUpload(size);
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak is what is in use now
    const std::int64_t before = peakBytes();
    const auto sent = client.Put(
        at(id) + "?segmentIndex=0", {{sessionHeader, developmentKey}}, size,
        [&](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            return sink.write(bytes.data() + offset, std::min(size - offset, std::size_t{65536}));
        },
        "application/octet-stream");
    ASSERT_TRUE(sent);
    EXPECT_EQ(sent->status, 200);
    EXPECT_LT(peakBytes() - before, std::int64_t{8} << 20);
    const Json requests = control("GET", "/_service/requests").at("requests");
    const Json request = requests.at(requests.size() - 1);
    EXPECT_EQ(request.at("bodyBytes"), size);
    EXPECT_EQ(request.at("bodySha256"), sha256(bytes));
    const auto first = KeloService::decodeBase64(request.at("body").get<std::string>());
    EXPECT_TRUE(*first == bytes.substr(0, 64 << 10));
    EXPECT_EQ(kept(id).at("segments").at(0).at("bytes"), size);
}

TEST_F(UploadsTest, ChunkedSegmentsAreTaken) {
    const std::string id = newUpload(6);
    RawClient raw = rawClient();
    raw.send("PUT " + at(id) + "?segmentIndex=0 HTTP/1.1\r\nkelo-session-id: " + developmentKey +
             "\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n3\r\ndef\r\n0\r\n\r\n");
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 200 OK\r\n"));
    EXPECT_EQ(kept(id).at("segments").at(0).at("bytes"), 6);
}

TEST_F(UploadsTest, ARefusedSegmentLeavesTheConnectionUsable) {
    RawClient raw = rawClient();
    for (int i = 0; i < 2; ++i) {
        raw.send("PUT " + at("none") + "?segmentIndex=0 HTTP/1.1\r\nkelo-session-id: " +
                 developmentKey + "\r\nContent-Length: 100000\r\n\r\n" + anyBytes(100000));
        EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 404 Not Found\r\n"));
    }
}

TEST_F(UploadsTest, ASegmentThatBreaksOffIsNotKept) {
    const std::string id = newUpload(1000);
    control("DELETE", "/_service/requests");
    RawClient raw = rawClient();
    raw.send("PUT " + at(id) + "?segmentIndex=0 HTTP/1.1\r\nkelo-session-id: " + developmentKey +
             "\r\nContent-Length: 1000\r\n\r\n" + anyBytes(500));
    raw.leave();
    Json requests = Json::array();
    for (int i = 0; i < 500 && requests.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        requests = control("GET", "/_service/requests").at("requests");
    }
    EXPECT_EQ(requests.at(0).at("bodyBytes"), 500);
    EXPECT_EQ(kept(id).at("segments").size(), 0U);
}

TEST_F(UploadsTest, FaultsActInTheMiddleOfASegment) {
    const std::string id = newUpload(200000);
    const std::string head = "PUT " + at(id) +
                             "?segmentIndex=0 HTTP/1.1\r\nkelo-session-id: " + developmentKey +
                             "\r\nContent-Length: 200000\r\n\r\n";
    addFault({{"match", {{"method", "PUT"}}},
              {"action", {{"type", "reset"}, {"afterBodyBytes", 100000}}}});
    RawClient raw = rawClient();
    raw.send(head + anyBytes(100001)); // nothing that a reset could hit on its way
    const auto received = raw.readAll();
    EXPECT_EQ(received.bytes, "");
    EXPECT_EQ(received.end, RawClient::End::Reset);
    EXPECT_EQ(fired(), 1);
    EXPECT_EQ(kept(id).at("segments").size(), 0U);
    // An answer of the script's own asks the route nothing, and takes the body off the wire.
    addFault({{"match", {{"method", "PUT"}}}, {"action", {{"type", "error"}, {"code", 103}}}});
    EXPECT_EQ(segment(id, "0", anyBytes(200000)).code(), 103);
    EXPECT_EQ(kept(id).at("segments").size(), 0U);
    EXPECT_EQ(segment(id, "0", anyBytes(200000)).status, 200);
}

TEST_F(UploadsTest, BodiesThatAreHeldMeetSuchFaultsAtTheirEnd) {
    addFault(
        {{"match", {{"path", "/loops"}}}, {"action", {{"type", "close"}, {"afterBodyBytes", 1}}}});
    RawClient raw = rawClient();
    raw.send("POST /loops HTTP/1.1\r\nContent-Length: 4\r\n\r\nabcd");
    const auto received = raw.readAll();
    EXPECT_EQ(received.bytes, "");
    EXPECT_EQ(received.end, RawClient::End::Closed);
    EXPECT_EQ(fired(), 1);
}

TEST_F(UploadsTest, AnUploadRateHoldsForSegments) {
    const std::string id = newUpload(200000);
    const auto timed = [&] {
        const auto before = Clock::now();
        EXPECT_EQ(segment(id, "0", anyBytes(200000)).status, 200);
        return Seconds(Clock::now() - before).count();
    };
    timed();
    control("POST", "/_service/upload-rate", {{"bytesPerSecond", 400000}});
    const double slow = timed();
    EXPECT_GT(slow, 0.4);
    EXPECT_LT(slow, 5);
    control("POST", "/_service/upload-rate", {{"bytesPerSecond", 0}});
    EXPECT_LT(timed(), slow);
}

TEST(UploadFolder, IsTemporaryWithoutADatabaseFile) {
    std::string path;
    {
        const KeloService::UploadFolder folder(":memory:");
        path = folder.path("");
        std::string names[2];
        for (std::string& name : names) {
            KeloService::FileWriter file(folder);
            EXPECT_TRUE(file.write("abc"));
            name = folder.path(file.file().name);
            if (&name == &names[0]) {
                file.keep();
            }
        }
        EXPECT_TRUE(std::filesystem::exists(names[0]));
        EXPECT_FALSE(std::filesystem::exists(names[1]));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

bool isMp4(const std::string& bytes) {
    return KeloService::isMp4(
        static_cast<std::int64_t>(bytes.size()), [&](std::int64_t offset, std::size_t count) {
            // Piece by piece, as from files that are joined.
            return bytes.substr(static_cast<std::size_t>(offset), std::min<std::size_t>(count, 3));
        });
}

TEST(Mp4Check, LooksAtTheOutermostBoxes) {
    using KeloService::box;
    const std::string ftyp = box("ftyp", "isom");
    const std::string moov = box("moov", "index");
    const std::string mdat = box("mdat", "media");
    EXPECT_TRUE(isMp4(ftyp + moov + mdat));
    EXPECT_TRUE(isMp4(ftyp + mdat + box("free", "") + moov));
    EXPECT_FALSE(isMp4(""));
    EXPECT_FALSE(isMp4(ftyp));
    EXPECT_FALSE(isMp4(ftyp + moov));
    EXPECT_FALSE(isMp4(ftyp + mdat));
    EXPECT_FALSE(isMp4(moov + ftyp + mdat));
    EXPECT_FALSE(isMp4(ftyp + moov + mdat + "1234567"));
    EXPECT_FALSE(isMp4(ftyp + moov + mdat.substr(0, mdat.size() - 1)));
    EXPECT_FALSE(isMp4(ftyp + moov + std::string("\0\0\0\7mdat", 8)));
}

TEST(Mp4Check, KnowsBothOtherWaysToTellALength) {
    using KeloService::box;
    const std::string head = box("ftyp", "isom") + box("moov", "");
    EXPECT_TRUE(isMp4(head + std::string("\0\0\0\0mdat to the end", 19)));
    const std::string longHead("\0\0\0\1mdat\0\0\0\0\0\0\0\x12", 16);
    EXPECT_TRUE(isMp4(head + longHead + "ab"));
    EXPECT_FALSE(isMp4(head + longHead + "a"));
    EXPECT_FALSE(isMp4(head + longHead + "abc"));
    EXPECT_FALSE(isMp4(head + std::string("\0\0\0\1mdat\xff\xff\xff\xff\xff\xff\xff\xff", 16)));
}

} // namespace
} // namespace KeloServiceTest
