#include "support/Awaited.hpp"
#include "support/ServiceTest.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

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
    // A host may be spelled in several ways.
    for (const char* spelling : {"LOCALHOST", "localhost.", "LocalHost."}) {
        delegate->host = spelling + (":" + std::to_string(service.port()));
        session = ownSession();
        session->sessionManager();
        for (const char* asked : {"localhost", "LocalHost"}) {
            delegate->host = asked + (":" + std::to_string(service.port()));
            EXPECT_TRUE(get().success()) << spelling << ' ' << asked;
        }
        delegate->host = other;
        EXPECT_TRUE(isUntrusted(get())) << spelling;
    }
}

TEST_F(PinningAtService, TheSecondCertificateIsPinnedToo) {
    const std::string certificates = KELO_CERTIFICATES_PATH;
    const StandIn rotated({"--certificate", certificates + "/development-2.pem", "--key",
                           certificates + "/development-2.key"});
    delegate->host = rotated.host();
    EXPECT_TRUE(get().success());
}

} // namespace KeloAPI::testing
