#include "service/media/MediaFiles.hpp"
#include "support/Mp4Boxes.hpp"
#include "support/TestService.hpp"

#include <map>
#include <set>

namespace KeloServiceTest {
namespace {

class MediaTest : public ServiceTest {
protected:
    Json newestPost() { return records("/timelines/latest?size=1").at(0); }
    httplib::Result ask(const std::string& where, const httplib::Headers& headers) {
        return client.Get(where, headers);
    }
};

TEST_F(MediaTest, WhatAPostNamesIsThere) {
    const std::map<std::string, std::string> types = {
        {"h264", "video/mp4"},
        {"h264-preview", "video/mp4"},
        {"hls", "application/vnd.apple.mpegurl"},
    };
    std::set<std::string> tags;
    std::size_t videos = 0;
    for (const Json& record : records("/timelines/latest?size=30")) {
        for (const Json& offer : record.at("videoUrls")) {
            const auto found = client.Head(pathOf(offer.at("videoUrl")));
            ASSERT_TRUE(found && found->status == 200) << offer;
            EXPECT_EQ(found->get_header_value("Content-Type"), types.at(offer.at("format")));
            EXPECT_NE(found->get_header_value("Content-Length"), "0");
            EXPECT_EQ(found->get_header_value("Accept-Ranges"), "bytes");
            if (offer.at("format") != "hls") {
                tags.insert(found->get_header_value("ETag"));
                ++videos;
            }
        }
        for (const char* key : {"thumbnailUrl", "avatarUrl"}) {
            const auto found = client.Get(pathOf(record.at(key)));
            ASSERT_TRUE(found && found->status == 200) << record.at(key);
            EXPECT_EQ(found->get_header_value("Content-Type"), "image/png");
            EXPECT_TRUE(found->body.starts_with("\x89PNG\r\n\x1A\n"));
        }
    }
    EXPECT_GT(videos, 60U);
    EXPECT_EQ(tags.size(), videos);
}

TEST_F(MediaTest, ChannelsHaveTheirIcons) {
    const Json channel = data("/timelines/channels/3?size=1").at("channel");
    std::set<std::string> images;
    for (const char* key : {"iconFullUrl", "retinaIconFullUrl", "exploreRetinaIconFullUrl"}) {
        const auto found = client.Get(pathOf(channel.at(key)));
        ASSERT_TRUE(found && found->status == 200) << channel.at(key);
        EXPECT_EQ(found->get_header_value("Content-Type"), "image/png");
        images.insert(found->body);
    }
    EXPECT_EQ(images.size(), 3U);
    for (const char* file : {"99.png", "0.png", "x.png", ".png", "3.jpg", "3@3x.png"}) {
        EXPECT_EQ(client.Get(std::string("/media/channels/") + file)->status, 404) << file;
    }
}

TEST_F(MediaTest, OffersOfAPostHaveVersionsOfTheirOwn) {
    for (const Json& record : records("/timelines/latest?size=100")) {
        std::set<std::string> versions;
        for (const Json& offer : record.at("videoUrls")) {
            versions.insert(offer.at("id").get<std::string>());
        }
        EXPECT_EQ(versions.size(), record.at("videoUrls").size());
    }
}

TEST_F(MediaTest, ThumbnailsShowTheVideo) {
    const auto& videos = KeloService::mediaFiles("videos/480");
    const auto& pictures = KeloService::mediaFiles("pictures/480");
    for (const Json& record : records("/timelines/latest?size=5")) {
        const auto thumbnail = client.Get(pathOf(record.at("thumbnailUrl")));
        const auto video = client.Get(defaultVideoPath(record));
        ASSERT_TRUE(thumbnail && video);
        std::size_t shown = 0;
        while (shown < videos.size() && !video->body.starts_with(videos[shown].bytes)) {
            ++shown;
        }
        ASSERT_LT(shown, videos.size());
        EXPECT_TRUE(thumbnail->body == pictures.at(shown).bytes) << videos[shown].name;
    }
}

TEST_F(MediaTest, PlaylistsNameFilesThatAreThere) {
    for (const Json& record : records("/timelines/latest?size=20")) {
        const Json offer = record.at("videoUrls").back();
        if (offer.at("format") != "hls") {
            continue;
        }
        std::string folder = pathOf(offer.at("videoUrl"));
        folder.resize(folder.rfind('/') + 1);
        const auto beginning = client.Get(folder + "init.mp4");
        const auto segment = client.Get(folder + "segment2.m4s");
        ASSERT_TRUE(beginning && segment);
        EXPECT_EQ(boxKinds(beginning->body), "ftyp moov free ");
        EXPECT_EQ(boxKinds(segment->body), "moof mdat free ");
        EXPECT_EQ(segment->get_header_value("Content-Type"), "video/iso.segment");
        EXPECT_EQ(client.Get(folder + "segment4.m4s")->status, 404);
        return;
    }
    FAIL() << "no post has a playlist";
}

TEST_F(MediaTest, AreTheSameEachTimeAndInEachService) {
    const std::string where = videoPath();
    const std::string bytes = client.Get(where)->body;
    EXPECT_TRUE(client.Get(where)->body == bytes);
    KeloService::Service other(settings());
    other.start();
    EXPECT_TRUE(Client(other.port()).Get(where)->body == bytes);
}

TEST_F(MediaTest, HeadTellsWhatGetWouldSend) {
    const std::string where = videoPath();
    const auto whole = client.Get(where);
    const auto head = client.Head(where);
    ASSERT_TRUE(whole && head);
    EXPECT_EQ(head->body, "");
    EXPECT_EQ(head->get_header_value("Content-Length"), std::to_string(whole->body.size()));
    EXPECT_EQ(whole->get_header_value("Content-Length"), std::to_string(whole->body.size()));
    EXPECT_EQ(head->get_header_value("ETag"), whole->get_header_value("ETag"));
}

TEST_F(MediaTest, SendsTheRangeThatIsAskedFor) {
    const std::string where = videoPath();
    const std::string whole = client.Get(where)->body;
    const std::size_t size = whole.size();
    const auto expect = [&](const std::string& range, std::size_t first, std::size_t count) {
        const auto part = ask(where, {{"Range", "bytes=" + range}});
        ASSERT_TRUE(part);
        EXPECT_EQ(part->status, 206) << range;
        EXPECT_TRUE(part->body == whole.substr(first, count)) << range;
        EXPECT_EQ(part->get_header_value("Content-Length"), std::to_string(count)) << range;
        EXPECT_EQ(part->get_header_value("Content-Range"), "bytes " + std::to_string(first) + "-" +
                                                               std::to_string(first + count - 1) +
                                                               "/" + std::to_string(size));
        EXPECT_EQ(part->get_header_value("Content-Type"), "video/mp4");
    };
    expect("0-0", 0, 1);
    expect("100-1099", 100, 1000);
    expect("5000-", 5000, size - 5000);
    expect("-10", size - 10, 10);
    expect("-999999999", 0, size);
    expect("0-999999999", 0, size);
    expect(std::to_string(size - 1) + "-", size - 1, 1);
}

TEST_F(MediaTest, RefusesARangeBehindTheEnd) {
    const std::string where = videoPath();
    const std::string size = client.Head(where)->get_header_value("Content-Length");
    for (const std::string& range : {size + "-", size + "-9999999", std::string("-0")}) {
        const auto refused = ask(where, {{"Range", "bytes=" + range}});
        ASSERT_TRUE(refused);
        EXPECT_EQ(refused->status, 416) << range;
        EXPECT_EQ(refused->get_header_value("Content-Range"), "bytes */" + size) << range;
        EXPECT_EQ(Json::parse(refused->body).at("code"), 416);
    }
}

TEST_F(MediaTest, SendsTheWholeFileWhereARangeDoesNotApply) {
    const std::string where = videoPath();
    const auto whole = client.Get(where);
    const std::string tag = whole->get_header_value("ETag");
    const auto several = ask(where, {{"Range", "bytes=0-1,5-6"}});
    EXPECT_EQ(several->status, 200);
    EXPECT_TRUE(several->body == whole->body);
    const auto changed = ask(where, {{"Range", "bytes=0-1"}, {"If-Range", "\"other\""}});
    EXPECT_EQ(changed->status, 200);
    EXPECT_TRUE(changed->body == whole->body);
    EXPECT_EQ(ask(where, {{"Range", "bytes=0-1"}, {"If-Range", tag}})->status, 206);
    const auto json = ask("/timelines/empty", {{"Range", "bytes=0-1"}});
    EXPECT_EQ(json->status, 200);
    EXPECT_TRUE(Json::parse(json->body).contains("data"));
}

TEST_F(MediaTest, RefusesARangeThatCannotBeRead) {
    const std::string where = videoPath();
    for (const char* range : {"bytes=abc", "lines=0-1", "bytes=5-2"}) {
        RawClient raw = rawClient();
        raw.send("GET " + where + " HTTP/1.1\r\nRange: " + range + "\r\n\r\n");
        const auto received = raw.readAll();
        EXPECT_TRUE(received.bytes.starts_with("HTTP/1.1 416")) << range;
        EXPECT_EQ(received.end, RawClient::End::Closed) << range;
    }
}

TEST_F(MediaTest, RefusesWhatIsNotThere) {
    for (const char* where :
         {"/media/videos/k1.mp4", "/media/videos/k1/index.m3u8", "/media/videos/k1/init.mp4",
          "/media/thumbnails/k1.png", "/media/avatars/9.png", "/media/thumbnails/x", "/media/",
          "/media/videos/"}) {
        EXPECT_EQ(client.Get(where)->status, 404) << where;
        EXPECT_EQ(client.Head(where)->status, 404) << where;
    }
    const std::string thumbnail = pathOf(newestPost().at("thumbnailUrl"));
    EXPECT_EQ(client.Get(thumbnail + "x")->status, 404);
    EXPECT_EQ(client.Post(thumbnail, "", "text/plain")->status, 405);
}

TEST_F(MediaTest, NeedsNoSession) {
    EXPECT_EQ(get(videoPath(), "")->status, 200);
    EXPECT_EQ(get(videoPath(), "an unknown key")->status, 200);
}

TEST_F(MediaTest, IsLoggedAndMeetsFaults) {
    const std::string where = videoPath();
    control("DELETE", "/_service/requests");
    addFault({{"match", {{"path", "/media/videos/*"}}},
              {"action", {{"type", "close"}, {"afterBytes", 2000}}}});
    addFault(
        {{"match", {{"path", "/media/*"}}}, {"action", {{"type", "status"}, {"status", 503}}}});
    RawClient raw = rawClient();
    raw.send("GET " + where + " HTTP/1.1\r\n\r\n");
    const auto received = raw.readAll();
    EXPECT_EQ(received.bytes.size(), 2000U);
    EXPECT_EQ(received.end, RawClient::End::Closed);
    EXPECT_EQ(client.Get(where)->status, 503);
    EXPECT_EQ(client.Get(where)->status, 200);
    const Json requests = control("GET", "/_service/requests").at("requests");
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0].at("path"), where);
}

} // namespace
} // namespace KeloServiceTest
