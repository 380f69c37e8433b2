#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <openssl/ssl.h>

#include <atomic>
#include <csignal>
#include <cstdint>

namespace KeloAPI::testing {
namespace {

/// One HTTP/2 connection, frame by frame, over the server's end of TLS.
class FrameConnection {
public:
    FrameConnection(SSL_CTX* context, const RawConnection& connection)
        : _ssl(SSL_new(context), &SSL_free) {
        SSL_set_fd(_ssl.get(), connection.socket());
        _open = SSL_accept(_ssl.get()) == 1 && read(std::string_view(preface).size()) == preface;
        write(settings, 0, 0, "");
    }

    /// Reads up to the end of a request; the stream it came on, or 0 when the client has gone.
    std::uint32_t readRequest() {
        while (_open) {
            const std::string head = read(9);
            if (!_open) {
                break;
            }
            const std::size_t size = byte(head, 0) << 16U | byte(head, 1) << 8U | byte(head, 2);
            read(size);
            if (byte(head, 3) == settings && byte(head, 4) == 0) {
                write(settings, acknowledged, 0, "");
            }
            const bool ofRequest = byte(head, 3) == headers || byte(head, 3) == data;
            if (ofRequest && (byte(head, 4) & endOfStream) != 0) {
                return byte(head, 7) << 8U | byte(head, 8);
            }
        }
        return 0;
    }

    void answer(std::uint32_t stream) {
        write(headers, endOfStream | endOfHeaders, stream, "\x88"); // ":status: 200"
    }

    /// Says that streams beyond `last` have not been and will not be looked at.
    void goAway(std::uint32_t last, std::uint32_t error) {
        write(goaway, 0, 0, number(last) + number(error));
    }

    /// Sends what no server may: the connection is of no more use to the client.
    void breakProtocol() { write(data, 0, 0, "x"); }

    void waitForClose() {
        while (_open) {
            read(1);
        }
    }

private:
    static constexpr const char* preface = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n";
    static constexpr std::uint8_t data = 0;
    static constexpr std::uint8_t headers = 1;
    static constexpr std::uint8_t settings = 4;
    static constexpr std::uint8_t goaway = 7;
    static constexpr std::uint8_t acknowledged = 1;
    static constexpr std::uint8_t endOfStream = 1;
    static constexpr std::uint8_t endOfHeaders = 4;

    static std::uint32_t byte(const std::string& bytes, std::size_t at) {
        return static_cast<std::uint8_t>(bytes[at]);
    }
    static std::string number(std::uint32_t value) {
        return {static_cast<char>(value >> 24U), static_cast<char>(value >> 16U),
                static_cast<char>(value >> 8U), static_cast<char>(value)};
    }

    std::string read(std::size_t size) {
        std::string bytes(size, '\0');
        std::size_t at = 0;
        while (_open && at < size) {
            const int got = SSL_read(_ssl.get(), bytes.data() + at, static_cast<int>(size - at));
            _open = got > 0;
            at += _open ? static_cast<std::size_t>(got) : 0;
        }
        return bytes;
    }

    void write(std::uint8_t type, std::uint8_t flags, std::uint32_t stream,
               const std::string& payload) {
        std::string frame = number(static_cast<std::uint32_t>(payload.size())).substr(1);
        frame += static_cast<char>(type);
        frame += static_cast<char>(flags);
        frame += number(stream) + payload;
        _open = _open && SSL_write(_ssl.get(), frame.data(), static_cast<int>(frame.size())) > 0;
    }

    std::unique_ptr<SSL, decltype(&SSL_free)> _ssl;
    bool _open = true;
};

int selectHTTP2(SSL*, const unsigned char** selected, unsigned char* size, const unsigned char*,
                unsigned, void*) {
    *selected = reinterpret_cast<const unsigned char*>("h2");
    *size = 2;
    return SSL_TLSEXT_ERR_OK;
}

class GoAwayTest : public TransportTest {
protected:
    using Handler = std::function<void(FrameConnection&, int connection)>;

    GoAwayTest() {
        // OpenSSL writes to a client that has gone in the plain way.
        std::signal(SIGPIPE, SIG_IGN);
        SSL_CTX_use_certificate(_context.get(), _certificate.x509());
        SSL_CTX_use_PrivateKey(_context.get(), _certificate.key());
        SSL_CTX_set_alpn_select_cb(_context.get(), &selectHTTP2, nullptr);
    }

    /// What comes of the request where each connection is handled so; connections count from 1.
    Observer sent(URLRequest request, Handler handler) {
        serve(std::move(handler));
        request.url = URL::parse(url());
        return send(*pinning("127.0.0.1", {certificate()}), request);
    }

    void serve(Handler handler) {
        _server =
            std::make_unique<RawServer>([this, handler = std::move(handler)](RawConnection& raw) {
                const int number = ++connections;
                FrameConnection connection(_context.get(), raw);
                handler(connection, number);
            });
    }

    static constexpr std::size_t all = 3;

    /// Reads as many requests; the first one's stream.
    static std::uint32_t readAll(FrameConnection& connection) {
        const std::uint32_t first = connection.readRequest();
        for (std::size_t i = 1; i < all; ++i) {
            connection.readRequest();
        }
        return first;
    }

    /// Sends as many requests at once and waits for their ends.
    std::vector<Observer> sendAll(Method method) {
        const auto transport = pinning("127.0.0.1", {certificate()});
        std::vector<Observer> observers;
        for (std::size_t i = 0; i < all; ++i) {
            observers.push_back(std::make_shared<RecordingObserver>());
            auto request = get(url());
            request.method = method;
            transport->start(request, observers.back());
        }
        for (const Observer& observer : observers) {
            EXPECT_TRUE(observer->wait());
        }
        return observers;
    }

    std::string url() const { return _server->url("/", "https"); }
    Certificate certificate() const { return _certificate.certificate(); }

    std::atomic<int> connections = 0;

private:
    TestCertificate _certificate = TestCertificate::selfSigned({});
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> _context{SSL_CTX_new(TLS_server_method()),
                                                               &SSL_CTX_free};
    std::unique_ptr<RawServer> _server; // goes before what its connections use
};

TEST_F(GoAwayTest, ARequestThatChangesNothingIsSentAgain) {
    for (const bool closesAtOnce : {true, false}) {
        for (const std::uint32_t error : {0U, 11U}) {
            connections = 0;
            const auto heard = sent(get("/"), [&](FrameConnection& connection, int number) {
                const std::uint32_t stream = connection.readRequest();
                if (number == 1) {
                    connection.goAway(0, error);
                } else {
                    connection.answer(stream);
                }
                if (number > 1 || !closesAtOnce) {
                    connection.waitForClose();
                }
            });
            EXPECT_TRUE(succeeded(heard)) << closesAtOnce << error;
            EXPECT_EQ(connections, 2);
        }
    }
}

TEST_F(GoAwayTest, AnActionIsLost) {
    for (const bool closesAtOnce : {true, false}) {
        for (const std::uint32_t error : {0U, 11U}) {
            connections = 0;
            const auto action = with(Method::POST, "/", "body");
            const auto heard = sent(action, [&](FrameConnection& connection, int) {
                connection.readRequest();
                connection.goAway(0, error);
                if (!closesAtOnce) {
                    connection.waitForClose();
                }
            });
            EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ConnectionLost)) << closesAtOnce << error;
            EXPECT_EQ(connections, 1);
        }
    }
}

TEST_F(GoAwayTest, OfSeveralRequestsOnlyThoseThatWereNotProcessedAreSentAgain) {
    for (const std::uint32_t processed : {0U, 1U}) {
        connections = 0;
        std::atomic<std::size_t> answered = 0;
        serve([&](FrameConnection& connection, int number) {
            if (number == 1) {
                const std::uint32_t first = readAll(connection);
                connection.goAway(processed == 0 ? 0 : first, 0);
                if (processed > 0) {
                    connection.answer(first);
                    ++answered;
                }
            }
            for (auto stream = connection.readRequest(); number > 1 && stream != 0;
                 stream = connection.readRequest()) {
                connection.answer(stream);
                ++answered;
            }
        });
        const auto start = std::chrono::steady_clock::now();
        for (const Observer& observer : sendAll(Method::GET)) {
            EXPECT_TRUE(succeeded(observer)) << processed;
        }
        EXPECT_EQ(answered, all);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(12))
            << "none is left lying until just before it times out";
    }
}

TEST_F(GoAwayTest, ActionsThatTheServerHasTakenAreNotSentAgain) {
    // The server has read and may have done them all when it makes a mistake, or just closes.
    for (const bool breaks : {true, false}) {
        connections = 0;
        std::atomic<std::size_t> taken = 0;
        serve([&](FrameConnection& connection, int number) {
            if (number == 1) {
                readAll(connection);
                taken += all;
                if (breaks) {
                    connection.breakProtocol();
                }
                return;
            }
            for (auto stream = connection.readRequest(); stream != 0;
                 stream = connection.readRequest()) {
                ++taken;
                connection.answer(stream);
            }
        });
        for (const Observer& observer : sendAll(Method::POST)) {
            EXPECT_TRUE(failedWith(observer, HTTPErrorCode::ConnectionLost)) << breaks;
        }
        EXPECT_EQ(taken, all) << breaks;
    }
}

TEST_F(GoAwayTest, WhatMayHaveBeenProcessedIsLostAndNotSentAgain) {
    for (const std::uint32_t error : {0U, 1U, 11U}) {
        connections = 0;
        const auto heard = sent(get("/"), [&](FrameConnection& connection, int) {
            connection.goAway(connection.readRequest(), error);
        });
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ConnectionLost)) << error;
        EXPECT_EQ(connections, 1);
    }
}

TEST_F(GoAwayTest, AServerThatAlwaysGoesAwayIsGivenUp) {
    const auto heard = sent(get("/"), [&](FrameConnection& connection, int) {
        connection.readRequest();
        connection.goAway(0, 0);
    });
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ConnectionLost));
    EXPECT_LE(connections, 10);
}

} // namespace
} // namespace KeloAPI::testing
