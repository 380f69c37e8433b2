#include "support/Awaited.hpp"
#include "support/ServiceTest.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <netdb.h>

namespace KeloAPI::testing {

/// The certificates that are built into the library, against the service that serves with them.
class PinningAtService : public ServiceTest {
protected:
    PinningAtService() { session = ownSession(); }

    /// A session that makes its manager itself, when it first sends.
    std::shared_ptr<Session> ownSession() const {
        auto made = std::make_shared<Session>(SessionType::Authenticated);
        made->setDelegate(delegate);
        return made;
    }
    MeResult get() {
        return awaited<MeResult>(
            [&](auto completion) { MeEndpoint::create(session)->get(completion); });
    }
    static bool isUntrusted(const MeResult& result) {
        return result.error() && isHTTPError(*result.error(), HTTPErrorCode::ServerTrust);
    }
    /// Downloads what is at the address; checks that the file is there without an error only.
    std::optional<Error> download(const std::string& address) {
        const TemporaryFolder folder;
        const auto endpoint = Endpoint::create(session);
        endpoint->setPath(address);
        const auto [file, error] = awaited<URL, std::optional<Error>>([&](auto completion) {
            endpoint->download(URL::fileURL(folder.path("page")), completion);
        });
        EXPECT_EQ(folder.names().size(), error ? 0U : 1U) << address;
        return error;
    }
    static bool resolves(const char* host) {
        addrinfo* found = nullptr;
        const bool resolved = getaddrinfo(host, nullptr, nullptr, &found) == 0;
        if (resolved) {
            freeaddrinfo(found);
        }
        return resolved;
    }
};

TEST_F(PinningAtService, TheHostThatASessionHasFirstIsAcceptedAndNoOther) {
    const std::string other = "127.0.0.1:" + std::to_string(service.port());
    const auto accepted = get();
    ASSERT_TRUE(accepted.success()) << accepted.error()->description();
    EXPECT_EQ(accepted.success()->user->username, StandIn::username);
    EXPECT_NE(accepted.success()->user->loopData, nullptr);
    // The same server under another name is judged by the system.
    delegate->host = other;
    service.requests();
    EXPECT_TRUE(isUntrusted(get()));
    EXPECT_TRUE(service.requests().empty());
    session = ownSession();
    EXPECT_TRUE(get().success());
    delegate->host = service.host();
    EXPECT_TRUE(isUntrusted(get()));
}

TEST_F(PinningAtService, DownloadsKnowThePinnedHostInAnySpelling) {
    const std::string port = ":" + std::to_string(service.port());
    std::vector<std::string> spellings = {"localhost", "LOCALHOST", "LocalHost"};
    if (resolves("localhost.")) { // not every machine's resolver takes the dot
        spellings.emplace_back("LOCALHOST.");
    }
    for (const char* pinned : {"localhost", "LOCALHOST", "localhost.", "LocalHost."}) {
        delegate->host = pinned + port;
        session = ownSession();
        session->sessionManager();
        for (const auto& host : spellings) {
            const auto error = download("https://" + host + port + "/timelines/all");
            EXPECT_FALSE(error) << pinned << ' ' << host << ' ' << error->description();
        }
        const auto error = download("https://127.0.0.1" + port + "/timelines/all");
        ASSERT_TRUE(error) << pinned;
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::ServerTrust)) << error->description();
    }
}

TEST_F(PinningAtService, ARedirectToAnUnpinnedNameOfTheSameServerIsRefused) {
    const std::string elsewhere =
        "https://127.0.0.1:" + std::to_string(service.port()) + "/users/me";
    service.addFault({{"match", {{"path", "/users/me"}}},
                      {"action", {{"type", "redirect"}, {"location", elsewhere}}}});
    EXPECT_TRUE(isUntrusted(get()));
}

TEST_F(PinningAtService, ARedirectOnTheSameHostKeepsTheSession) {
    service.addFault(
        {{"match", {{"path", "/users/me"}}},
         {"action",
          {{"type", "redirect"}, {"location", "https://" + service.host() + "/users/me"}}}});
    const auto outcome = get();
    ASSERT_TRUE(outcome.success()) << outcome.error()->description();
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].header("kelo-session-id"), StandIn::sessionKey);
}

TEST_F(PinningAtService, TheSecondCertificateIsPinnedToo) {
    const std::string certificates = KELO_CERTIFICATES_PATH;
    const StandIn rotated({"--certificate", certificates + "/development-2.pem", "--key",
                           certificates + "/development-2.key"});
    delegate->host = rotated.host();
    EXPECT_TRUE(get().success());
}

} // namespace KeloAPI::testing
