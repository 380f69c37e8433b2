#include "Matrix.hpp"

namespace KeloAPI::testing {

namespace {

using ConnectingFaults = FaultMatrix;

/// The server's whole first flight of the handshake, which is then sent as `how` says.
using SendFlight = std::function<void(RawConnection&, std::string flight)>;

std::function<void(RawConnection&, SSL_CTX*)> inHandshake(SendFlight send) {
    return [send = std::move(send)](RawConnection& raw, SSL_CTX* context) {
        const RawConnection::Session session(SSL_new(context), &SSL_free);
        BIO* in = BIO_new(BIO_s_mem());
        BIO* out = BIO_new(BIO_s_mem());
        SSL_set_bio(session.get(), in, out);
        while (BIO_ctrl_pending(out) == 0) {
            const std::string bytes = raw.read(65536);
            if (bytes.empty()) {
                return;
            }
            BIO_write(in, bytes.data(), static_cast<int>(bytes.size()));
            SSL_accept(session.get());
        }
        std::string flight(BIO_ctrl_pending(out), '\0');
        BIO_read(out, flight.data(), static_cast<int>(flight.size()));
        send(raw, std::move(flight));
    };
}

/// In place of a handshake.
std::function<void(RawConnection&, SSL_CTX*)> sayingPlainly(const std::string& bytes) {
    return inHandshake([bytes](RawConnection& raw, const std::string&) {
        raw.write(bytes);
        raw.waitForClose();
    });
}

std::vector<Fault> withoutConnection() {
    const auto at = [](std::string host) {
        return [host = std::move(host)](const Surroundings&) { return host; };
    };
    return {
        {.row = "the name has no address",
         .rule = HTTPErrorCode::CannotFindHost,
         // Longer than a label may be: the lookup fails without asking anybody.
         .host = at(std::string(70, 'a'))},
        {.row = "nobody listens", .rule = HTTPErrorCode::CannotConnect, .host = at("127.0.0.1:1")},
        {.row = "nobody takes the connection",
         .rule = HTTPErrorCode::TimedOut,
         .host = [](const Surroundings& around) { return around.deaf.host(); }}};
}

std::vector<Fault> brokenHandshakes() {
    std::vector<Fault> faults;
    for (const BreakingOff& way : breakingOff) {
        if (way.how == Leave::Farewell) {
            continue; // of a TLS that is not there yet
        }
        const std::string row = std::string("in TLS's handshake: ") + way.name;
        // Of some 700 bytes: the header of the first record, the server's greeting, its
        // certificate.
        for (const std::size_t place : {0, 1, 5, 6, 60, 127, 133, 300, 500}) {
            faults.push_back(
                {.row = row,
                 .variant = "after " + std::to_string(place) + " bytes",
                 .rule = way.code,
                 .handshake = inHandshake([=](RawConnection& raw, const std::string& all) {
                     EXPECT_GT(all.size(), place + 100);
                     raw.write(all.substr(0, place));
                     leave(raw, way.how);
                 })});
        }
        faults.push_back({.row = row,
                          .variant = "before the last byte",
                          .rule = way.code,
                          .handshake = inHandshake([=](RawConnection& raw, const std::string& all) {
                              raw.write(all.substr(0, all.size() - 1));
                              leave(raw, way.how);
                          })});
        if (way.how == Leave::Reset) {
            continue; // the client may meet it as it connects
        }
        faults.push_back({.row = row,
                          .variant = "before anything is read",
                          .rule = way.code,
                          .handshake = [=](RawConnection& raw, SSL_CTX*) { leave(raw, way.how); }});
    }
    faults.push_back({.row = "in TLS's handshake: byte by byte, without end",
                      .rule = HTTPErrorCode::TimedOut,
                      .handshake = inHandshake([](RawConnection& raw, const std::string& all) {
                          drip(raw, all.substr(0, 60));
                      }),
                      .isSlow = true});
    return faults;
}

std::vector<Fault> refusedHandshakes() {
    std::vector<Fault> faults;
    for (const int alert : {40, 42, 47, 70, 71, 80, 86, 112, 113, 116, 120}) {
        faults.push_back({.row = "TLS refuses with an alert",
                          .variant = std::to_string(alert),
                          .rule = HTTPErrorCode::ServerTrust,
                          .handshake = sayingPlainly(std::string("\x15\x03\x03\0\2\2", 6) +
                                                     static_cast<char>(alert))});
    }
    const std::vector<std::pair<const char*, std::string>> others = {
        {"HTTP", "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n"},
        {"SSH", "SSH-2.0-OpenSSH_9.2\r\n"},
        {"zeros", std::string(512, '\0')},
        {"a record that is too long",
         std::string("\x16\x03\x03\xFF\xFF", 5) + std::string(512, 'x')}};
    for (const auto& [name, bytes] : others) {
        faults.push_back({.row = "the server does not speak TLS",
                          .variant = name,
                          .rule = HTTPErrorCode::ServerTrust,
                          .handshake = sayingPlainly(bytes)});
    }
    for (const std::size_t place : {20, 140, 400}) {
        faults.push_back({.row = "one bit of the handshake is wrong",
                          .variant = "in byte " + std::to_string(place),
                          .rule = HTTPErrorCode::ServerTrust,
                          .handshake = inHandshake([=](RawConnection& raw, std::string all) {
                              all.at(place) = static_cast<char>(all.at(place) ^ 1);
                              raw.write(all);
                              raw.waitForClose();
                          })});
    }
    return faults;
}

std::vector<Fault> wrongCertificates() {
    const auto fault = [](const char* row, std::shared_ptr<SSL_CTX> Surroundings::*certificate) {
        return Fault{.row = row, .rule = HTTPErrorCode::ServerTrust, .certificate = certificate};
    };
    return {fault("the certificate is not pinned", &Surroundings::unknownTLS),
            fault("the pinned certificate has expired", &Surroundings::expiredTLS),
            fault("the pinned certificate is not valid yet", &Surroundings::notYetTLS),
            fault("the pinned certificate is for another name", &Surroundings::ofOtherNameTLS),
            fault("TLS is older than 1.2", &Surroundings::oldTLS)};
}

TEST_F(ConnectingFaults, EndEachCallOnceAndAsTheyShould) {
    std::vector<Fault> faults = withoutConnection();
    append(faults, brokenHandshakes());
    append(faults, refusedHandshakes());
    append(faults, wrongCertificates());
    run("connecting", faults);
}

} // namespace

} // namespace KeloAPI::testing
