#pragma once

#include <curl/curl.h>
#include <openssl/ssl.h>

namespace KeloAPI {

/// Whether an idle connection is unfit for another HTTP/1.1 request: data that nobody asked for
/// waits on it, which would be taken for the next response, or it has been closed. What TLS itself
/// sends at any time (session tickets, new keys) is taken in and does not count. Never blocks.
/// `tls` is null for a connection without TLS.
bool hasStrayData(curl_socket_t socket, SSL* tls);

} // namespace KeloAPI
