#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/LeaveProcess.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "support/Shortage.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <netdb.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string_view>

namespace KeloAPI::testing {
namespace {

/// Serves /large, in runs that take little memory, and short bodies. Keeps its connections, so that
/// no descriptor comes free behind the scenes.
void serveSmallAndLarge(RawConnection& connection) {
    constexpr std::size_t runs = 3200;
    static const std::string run(std::size_t{64} << 10U, 'x');
    connection.serve([&](const std::string& request) {
        if (pathOf(request) != "/large") {
            return okResponse("small");
        }
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(runs * run.size()) +
                         "\r\n\r\n");
        for (std::size_t i = 1; i < runs && connection.write(run); ++i) {
        }
        return run;
    });
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

    /// In the process that is starved: nothing that a test before has left behind is there.
    void inProcessOfItsOwn(const std::function<void()>& work) {
        EXPECT_EXIT(
            {
                server = std::make_unique<RawServer>(serveSmallAndLarge);
                manager = std::make_unique<Manager>(ServerTrustPolicyManager());
                work();
                leaveProcess(0);
            },
            ::testing::ExitedWithCode(0), "");
    }

    std::shared_ptr<Request> asked(const std::string& url) const {
        return manager->request(FixedRequest(url));
    }
    std::shared_ptr<Request> small() const { return asked(server->url("/")); }

    static void expect(bool good, const std::string& what) {
        if (!good) {
            static_cast<void>(std::fputs(("wrong: " + what + "\n").c_str(), stderr));
            leaveProcess(1);
        }
    }
    static void expectOutOfResources(const std::optional<Error>& error) {
        expect(error && isHTTPError(*error, HTTPErrorCode::OutOfResources),
               error ? error->description() : "no error");
    }
    static void expectOutOfResources(const std::shared_ptr<Request>& request) {
        expectOutOfResources(errorOf(request));
    }
    static void expectNone(const std::shared_ptr<Request>& request) {
        const auto error = errorOf(request);
        expect(!error, error ? error->description() : "");
    }

    /// What is asked for fails in the shortage and succeeds after it.
    template <class Shortage>
    static void expectShortageOnly(const std::function<std::shared_ptr<Request>()>& ask) {
        {
            const Shortage shortage;
            expectOutOfResources(ask());
        }
        expectNone(ask());
    }

    std::unique_ptr<RawServer> server;
    std::unique_ptr<Manager> manager;
};

TEST_F(ShortageDeathTest, NoThreadForTheResponse) {
    inProcessOfItsOwn([this] { expectShortageOnly<NoRoomForAThread>([this] { return small(); }); });
}

TEST_F(ShortageDeathTest, NoThreadForTheNetwork) {
    inProcessOfItsOwn([this] {
        expectNone(small());
        const TemporaryFolder folder;
        // That of the responses is there, that of the downloads is not.
        expectShortageOnly<NoRoomForAThread>([&] {
            return manager->download(FixedRequest(server->url("/")),
                                     URL::fileURL(folder.path("video")));
        });
        expect(folder.read("video") == "small", "the file is there");
    });
}

TEST_F(ShortageDeathTest, NoThreadForTheNetworkIsNotToldInsideTheStart) {
    inProcessOfItsOwn([this] {
        const auto transport = unpinned();
        Observer observer;
        {
            const NoRoomForAThread shortage;
            observer = start(*transport, get(server->url("/")));
            expect(!observer->hasCompleted(), "the call of start is over first");
        }
        expect(runUntil([&] { return observer->hasCompleted(); }), "the exchange ends");
        expectOutOfResources(observer->error);
    });
}

TEST_F(ShortageDeathTest, NoDescriptor) {
    inProcessOfItsOwn([this] {
        RawServer other(answeringAll(okResponse()));
        // For the network's thread, and for a second connection.
        expectShortageOnly<NoDescriptors>([this] { return small(); });
        expectShortageOnly<NoDescriptors>([&] { return asked(other.url("/")); });
    });
}

TEST_F(ShortageDeathTest, NoDescriptorToLookANameUp) {
    const std::string name = nameOfThisMachine();
    if (name.empty()) {
        GTEST_SKIP() << "this machine has no name with an address";
    }
    inProcessOfItsOwn([&] {
        expectNone(small()); // there are threads for the network and the responses
        const std::string url = "http://" + name + ':' + std::to_string(server->port()) + '/';
        for (int left = 0; left < 3; ++left) {
            const FewDescriptorsLeft shortage(left);
            expectOutOfResources(asked(url));
        }
        const auto error = errorOf(asked(url)); // its address need not be the server's
        expect(!error || isHTTPError(*error, HTTPErrorCode::CannotConnect), "the name is known");
    });
}

TEST_F(ShortageDeathTest, NoDescriptorForTheCertificates) {
    inProcessOfItsOwn([this] {
        expectNone(small());
        RawServer closing([](RawConnection&) {});
        {
            const FewDescriptorsLeft shortage(1); // for the connection
            expectOutOfResources(asked(closing.url("/", "https")));
        }
        const auto error = errorOf(asked(closing.url("/", "https")));
        expect(error && !isHTTPError(*error, HTTPErrorCode::OutOfResources), "no shortage");
    });
}

TEST_F(ShortageDeathTest, NoMemoryForTheBody) {
    inProcessOfItsOwn([this] {
        expectNone(small());
        {
            const LittleRoom shortage(std::size_t{60} << 20U);
            expectOutOfResources(asked(server->url("/large")));
            expectNone(small());
        }
        expectNone(asked(server->url("/large")));
    });
}

} // namespace
} // namespace KeloAPI::testing
