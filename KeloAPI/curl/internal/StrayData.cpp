#include <KeloAPI/curl/internal/StrayData.hpp>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <sys/socket.h>

#include <cerrno>

namespace KeloAPI {

namespace {

bool isQuiet(curl_socket_t socket) {
    char byte = 0;
    return ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 &&
           (errno == EAGAIN || errno == EWOULDBLOCK);
}

/// Lets OpenSSL read what waits. For that time it reads from the socket itself: libcurl's own way
/// to the network works inside its calls only.
bool holdsApplicationData(curl_socket_t socket, SSL* tls) {
    BIO* network = BIO_new_socket(socket, BIO_NOCLOSE);
    if (network == nullptr || BIO_up_ref(network) != 1) {
        BIO_free(network);
        return true;
    }
    BIO* reader = SSL_get_rbio(tls);
    BIO* writer = SSL_get_wbio(tls);
    BIO_up_ref(reader);
    BIO_up_ref(writer);
    SSL_set0_rbio(tls, network);
    SSL_set0_wbio(tls, network);

    ERR_clear_error();
    char byte = 0;
    const int peeked = SSL_peek(tls, &byte, 1);
    const bool isClean = peeked <= 0 && SSL_get_error(tls, peeked) == SSL_ERROR_WANT_READ &&
                         SSL_has_pending(tls) == 0; // not even the half of a record
    ERR_clear_error();

    SSL_set0_rbio(tls, reader);
    SSL_set0_wbio(tls, writer);
    return !isClean;
}

} // namespace

bool hasStrayData(curl_socket_t socket, SSL* tls) {
    const bool isBuffered = tls != nullptr && SSL_has_pending(tls) == 1;
    if (!isBuffered && isQuiet(socket)) {
        return false;
    }
    return tls == nullptr || holdsApplicationData(socket, tls);
}

} // namespace KeloAPI
