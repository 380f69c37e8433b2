#include "support/GetRequest.hpp"
#include "support/MainLoop.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "support/Shortage.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

#include <netdb.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string_view>

namespace KeloAPI::testing {
namespace {

constexpr std::size_t largeSize = std::size_t{200} << 20U;

/// Serves /large and short answers, one to a connection.
void serveSmallAndLarge(RawConnection& connection) {
    const bool large = connection.readRequest().starts_with("GET /large");
    const std::size_t size = large ? largeSize : 5;
    connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                     std::to_string(size) + "\r\n\r\n");
    if (!large) {
        connection.write("small");
        return;
    }
    static const std::string run(std::size_t{64} << 10U, 'x');
    for (std::size_t sent = 0; sent < size && connection.write(run); sent += run.size()) {
    }
}

/// Empty where it has no address. Other than that of localhost, it takes a lookup.
std::string nameOfThisMachine() {
    std::array<char, 256> name{};
    addrinfo* found = nullptr;
    if (::gethostname(name.data(), name.size() - 1) != 0 ||
        std::string_view(name.data()).starts_with("localhost") ||
        ::getaddrinfo(name.data(), nullptr, nullptr, &found) != 0) {
        return {};
    }
    ::freeaddrinfo(found);
    return name.data();
}

/// Each test starves a process of its own, which says what went wrong and exits with 0 if nothing
/// did.
class ShortageDeathTest : public TransportTest {
protected:
    void SetUp() override {
        if (isSanitized) {
            GTEST_SKIP() << "sanitizers have needs of their own";
        }
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    /// Sends, and runs the main queue until the answer is there.
    std::optional<Error> errorOf(const std::string& path) { return errorOfURL(server->url(path)); }
    std::optional<Error> errorOfURL(const std::string& url) {
        return ended(manager->request(GetRequest(URL::parse(url))));
    }
    std::optional<Error> errorOfDownload(const std::string& destination) {
        return ended(
            manager->download(GetRequest(URL::parse(server->url("/"))), URL::fileURL(destination)));
    }

    static std::optional<Error> ended(const std::shared_ptr<Request>& request) {
        std::optional<Error> error;
        bool ended = false;
        request->response(std::function<Result<std::string>(const ResponseContent&)>(serializeText),
                          std::function<void(Result<std::string>, Timeline)>(
                              [&](const Result<std::string>& text, Timeline) {
                                  if (!text) {
                                      error = text.error();
                                  }
                                  ended = true;
                              }));
        expect(runUntil([&] { return ended; }), "the request ends");
        return error;
    }

    static void expect(bool good, const std::string& what) {
        if (!good) {
            std::fputs(("wrong: " + what + "\n").c_str(), stderr);
            std::_Exit(1);
        }
    }
    static void expectOutOfResources(const std::optional<Error>& error) {
        expect(error && isHTTPError(*error, HTTPErrorCode::OutOfResources),
               error ? error->description() : "no error");
    }
    static void expectNone(const std::optional<Error>& error) {
        expect(!error, error ? error->description() : "");
    }

    /// In the process that is starved: nothing that a test before has left behind is there.
    void begin() {
        server = std::make_unique<RawServer>(serveSmallAndLarge);
        manager = std::make_unique<Manager>(ServerTrustPolicyManager());
    }

    std::unique_ptr<RawServer> server;
    std::unique_ptr<Manager> manager;
};

TEST_F(ShortageDeathTest, NoThreadForTheAnswer) {
    EXPECT_EXIT(
        {
            begin();
            {
                const NoRoomForAThread shortage;
                expectOutOfResources(errorOf("/"));
            }
            expectNone(errorOf("/"));
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, NoThreadForTheNetwork) {
    EXPECT_EXIT(
        {
            begin();
            expectNone(errorOf("/"));
            const TemporaryFolder folder;
            {
                // That of the answers is there, that of the downloads is not.
                const NoRoomForAThread shortage;
                expectOutOfResources(errorOfDownload(folder.path("video")));
            }
            expectNone(errorOfDownload(folder.path("video")));
            expect(folder.read("video") == "small", "the file is there");
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, NoThreadForTheNetworkIsNotToldInsideTheStart) {
    EXPECT_EXIT(
        {
            begin();
            const auto transport = unpinned();
            const auto observer = std::make_shared<RecordingObserver>();
            {
                const NoRoomForAThread shortage;
                transport->start(get(server->url("/")), observer);
                expect(!observer->hasCompleted(), "the call of start is over first");
            }
            expect(runUntil([&] { return observer->hasCompleted(); }), "the exchange ends");
            expectOutOfResources(observer->error);
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, NoDescriptor) {
    EXPECT_EXIT(
        {
            begin();
            // Keeps its connections, so that no descriptor comes free behind the scenes.
            RawServer keeping([](RawConnection& connection) {
                while (!connection.readRequest().empty()) {
                    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
                }
            });
            const GetRequest kept(URL::parse(keeping.url("/")));
            {
                const NoDescriptors shortage; // for the network's thread
                expectOutOfResources(ended(manager->request(kept)));
            }
            expectNone(ended(manager->request(kept)));
            {
                const NoDescriptors shortage; // for a second connection
                expectOutOfResources(errorOf("/"));
            }
            expectNone(errorOf("/"));
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, NoDescriptorToLookANameUp) {
    const std::string name = nameOfThisMachine();
    if (name.empty()) {
        GTEST_SKIP() << "this machine has no name with an address";
    }
    EXPECT_EXIT(
        {
            begin();
            expectNone(errorOf("/")); // there are threads for the network and the answers
            const std::string url = "http://" + name + ':' + std::to_string(server->port()) + '/';
            for (int left = 0; left < 3; ++left) {
                const FewDescriptorsLeft shortage(left);
                expectOutOfResources(errorOfURL(url));
            }
            const auto error = errorOfURL(url); // its address need not be the server's
            expect(!error || isHTTPError(*error, HTTPErrorCode::CannotConnect),
                   "the name is known");
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, NoDescriptorForTheCertificates) {
    EXPECT_EXIT(
        {
            begin();
            expectNone(errorOf("/"));
            RawServer closing([](RawConnection&) {});
            const std::string url = closing.url("/", "https");
            {
                const FewDescriptorsLeft shortage(1); // for the connection
                expectOutOfResources(errorOfURL(url));
            }
            const auto error = errorOfURL(url);
            expect(error && !isHTTPError(*error, HTTPErrorCode::OutOfResources), "no shortage");
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, NoMemoryForTheBody) {
    EXPECT_EXIT(
        {
            begin();
            expectNone(errorOf("/"));
            {
                const LittleRoom shortage(std::size_t{60} << 20U);
                expectOutOfResources(errorOf("/large"));
                expectNone(errorOf("/"));
            }
            expectNone(errorOf("/large"));
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace KeloAPI::testing
