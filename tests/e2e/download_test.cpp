#include "support/ServiceTest.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace KeloAPI {

using testing::runUntil;

/// Downloads of the base class: an answer that becomes a file.
class DownloadAtService : public testing::ServiceTest {
protected:
    DownloadAtService() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelo-XXXXXX").string();
        directory = mkdtemp(pattern.data());
        endpoint->setPath("timelines/all");
    }
    ~DownloadAtService() override { std::filesystem::remove_all(directory); }

    std::optional<Error> download(const URL& destination) {
        bool done = false;
        std::optional<Error> error;
        endpoint->download(destination, [&](const URL& url, std::optional<Error> sent) {
            EXPECT_EQ(url, destination);
            error = std::move(sent);
            done = true;
        });
        EXPECT_FALSE(done);
        EXPECT_TRUE(runUntil([&] { return done; }));
        return error;
    }
    std::string contents() const {
        std::ifstream stream(file());
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::filesystem::path file() const { return directory / "a file"; }
    URL destination() const { return URL::fileURL(file().string()); }
    std::size_t entries() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(directory), {}));
    }

    std::filesystem::path directory;
    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
};

TEST_F(DownloadAtService, TheAnswerBecomesTheFile) {
    EXPECT_EQ(download(destination()), std::nullopt);
    EXPECT_TRUE(nlohmann::json::parse(contents()).contains("data"));
    EXPECT_EQ(entries(), 1U);
}

TEST_F(DownloadAtService, AnOlderFileIsReplaced) {
    std::ofstream(file()) << "old";
    EXPECT_EQ(download(destination()), std::nullopt);
    EXPECT_NE(contents(), "old");
}

TEST_F(DownloadAtService, AnErrorStatusLeavesTheDestinationAsItWas) {
    std::ofstream(file()) << "old";
    endpoint->setPath("nowhere");
    const auto error = download(destination());
    ASSERT_TRUE(error.has_value());
    EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::HTTPStatus));
    EXPECT_EQ(error->integer(HTTPStatusCodeKey), 404);
    EXPECT_EQ(contents(), "old");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(DownloadAtService, ABrokenTransferLeavesTheDestinationAsItWas) {
    std::ofstream(file()) << "old";
    service.addFault({{"match", {{"path", "/timelines/all"}}},
                      {"action", {{"type", "reset"}, {"afterBytes", 2000}}}});
    ASSERT_TRUE(download(destination()).has_value());
    EXPECT_EQ(contents(), "old");
    EXPECT_EQ(entries(), 1U);
    EXPECT_EQ(download(destination()), std::nullopt);
}

TEST_F(DownloadAtService, ADestinationThatCannotBeWrittenIsAClearError) {
    const auto error = download(URL::fileURL((directory / "missing" / "file").string()));
    ASSERT_TRUE(error.has_value());
    EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::CannotWriteFile)) << error->description();
    const auto noFile = download(*URL::parse("https://service.example/x"));
    EXPECT_TRUE(isHTTPError(*noFile, HTTPErrorCode::CannotWriteFile));
}

} // namespace KeloAPI
