#include "FaultServer.hpp"

#include "support/TimeLimit.hpp"

#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

namespace KeloAPI::testing {

FaultServer::FaultServer(const Fault& fault, const Surroundings& around)
    : _fault(fault)
    , _around(around)
    , _isAtFault(!fault.isLate)
    , _server([this](RawConnection& raw) { serve(raw); }) {}

bool FaultServer::strikes() {
    return _isAtFault && !(_fault.isOnce && _hasStruck.exchange(true));
}

void FaultServer::recover() {
    _isAtFault = false;
    if (_fault.outlasts) {
        _recovering.release();
        EXPECT_TRUE(_done.try_acquire_for(timeLimit));
    }
}

void FaultServer::waitForRecovery() {
    EXPECT_TRUE(_recovering.try_acquire_for(timeLimit));
}

void FaultServer::tellThatItIsDone(const RawConnection& connection) {
    EXPECT_TRUE(eventually([&] {
        int unacknowledged = 1;
        return ::ioctl(connection.socket(), SIOCOUTQ, &unacknowledged) == 0 && unacknowledged == 0;
    }));
    _done.release();
}

void FaultServer::serve(RawConnection& raw) {
    if (_fault.speaks == Speaks::Plain) {
        serveHTTP1(raw);
        return;
    }
    const bool atFault = _fault.host == nullptr && _isAtFault;
    const auto& http = _fault.speaks == Speaks::HTTP2 ? _around.tlsWithHTTP2 : _around.tls;
    SSL_CTX* context = atFault && _fault.certificate != &Surroundings::tls
                           ? (_around.*_fault.certificate).get()
                           : http.get();
    if (atFault && _fault.handshake) {
        _fault.handshake(raw, context);
        return;
    }
    RawConnection::Session session(SSL_new(context), &SSL_free);
    SSL_set_fd(session.get(), raw.socket());
    if (SSL_accept(session.get()) != 1) {
        return;
    }
    RawConnection connection(raw.socket(), std::move(session), _log);
    if (FrameConnection::isSpokenOn(connection.session())) {
        serveHTTP2(connection);
    } else {
        serveHTTP1(connection);
    }
}

void FaultServer::serveHTTP1(RawConnection& connection) {
    const Encounter encounter{connection, *this, _around};
    bool goesOn = !(_fault.isEarly && strikes()) || _fault.strike(encounter);
    while (goesOn && !connection.readRequest().empty()) {
        goesOn = _fault.strike && !_fault.isEarly && strikes()
                     ? _fault.strike(encounter)
                     : connection.write(answerOf(wellBody));
    }
}

void FaultServer::serveHTTP2(RawConnection& connection) {
    FrameConnection frames(connection, _isAtFault ? _fault.window : 0x7FFFFFFF);
    bool goesOn = true;
    while (goesOn) {
        const std::uint32_t stream = frames.readRequest();
        goesOn = stream != 0 && (_fault.frames && strikes()
                                     ? _fault.frames(frames, stream)
                                     : frames.write(FrameConnection::response(stream, wellBody)));
    }
}

} // namespace KeloAPI::testing
