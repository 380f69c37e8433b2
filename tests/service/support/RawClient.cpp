#include "support/RawClient.hpp"

#include "../../support/TimeLimit.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <sys/socket.h>

#include <cerrno>
#include <stdexcept>

namespace KeloServiceTest {
namespace {

using KeloAPI::testing::timeLimit;

constexpr std::chrono::milliseconds silence(100);
constexpr unsigned char offered[] = {2, 'h', '2', 8, 'h', 't', 't', 'p', '/', '1', '.', '1'};

RawClient::End endOf(SSL* ssl, int result) {
    const int systemError = errno;
    switch (SSL_get_error(ssl, result)) {
    case SSL_ERROR_ZERO_RETURN:
        return RawClient::End::Closed;
    case SSL_ERROR_WANT_READ:
        return RawClient::End::Silent;
    case SSL_ERROR_SSL:
        return RawClient::End::Truncated;
    default:
        return systemError == ECONNRESET ? RawClient::End::Reset : RawClient::End::Truncated;
    }
}

} // namespace

RawClient::RawClient(int port) {
    const KeloService::SslContext context(SSL_CTX_new(TLS_client_method()));
    SSL_CTX_set_alpn_protos(context.get(), offered, sizeof offered);
    ssl_.reset(SSL_new(context.get()));
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    BIO* const stream = BIO_new_socket(socket, BIO_CLOSE);
    SSL_set_bio(ssl_.get(), stream, stream);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("cannot connect");
    }
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setPatience(timeLimit);
    if (SSL_connect(ssl_.get()) != 1) {
        leave();
    }
}

void RawClient::setPatience(std::chrono::milliseconds patience) const {
    const timeval time{patience.count() / 1000, (patience.count() % 1000) * 1000L};
    setsockopt(SSL_get_fd(ssl_.get()), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

void RawClient::send(const std::string& bytes) {
    SSL_write(ssl_.get(), bytes.data(), static_cast<int>(bytes.size()));
}

RawClient::Received RawClient::readAll(std::size_t enough) {
    Received received;
    char buffer[16384];
    for (;;) {
        setPatience(received.bytes.size() < enough ? timeLimit : silence);
        ERR_clear_error();
        errno = 0;
        const int count = SSL_read(ssl_.get(), buffer, sizeof buffer);
        if (count <= 0) {
            received.end = endOf(ssl_.get(), count);
            return received;
        }
        received.bytes.append(buffer, static_cast<std::size_t>(count));
    }
}

std::string RawClient::readAnswer() {
    setPatience(timeLimit);
    std::string answer;
    std::size_t wanted = std::string::npos;
    char buffer[16384];
    while (answer.size() < wanted) {
        const int count = SSL_read(ssl_.get(), buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        answer.append(buffer, static_cast<std::size_t>(count));
        const std::size_t headEnd = answer.find("\r\n\r\n");
        const std::size_t length = answer.find("Content-Length: ");
        if (headEnd != std::string::npos && length < headEnd) {
            wanted = headEnd + 4 + std::stoul(answer.substr(length + 16));
        }
    }
    return answer;
}

std::string RawClient::applicationProtocol() const {
    const unsigned char* name = nullptr;
    unsigned int length = 0;
    SSL_get0_alpn_selected(ssl_.get(), &name, &length);
    return {reinterpret_cast<const char*>(name), length};
}

} // namespace KeloServiceTest
