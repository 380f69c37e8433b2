#pragma once

#include <KeloAPI/base/Data.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/TransportSettings.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <functional>
#include <memory>

namespace KeloAPI {

/// Makes and starts requests over one transport, with one queue on which their responses are
/// serialised. Its requests share connections. When it is destroyed and its transport with it,
/// those in flight end with `Cancelled`; a transport that the caller keeps carries them to their
/// end. Usable from any thread. In a forked child the managers of its parent do not work: their
/// requests end with `Inherited`.
class KELO_API Manager {
public:
    /// Chooses where a download goes once its head is there: a file URL.
    using Destination = std::function<URL(const HTTPResponse& response)>;

    /// Over HTTP, each host's certificate judged by `trust`.
    explicit Manager(const ServerTrustPolicyManager& trust, const TransportSettings& settings = {});
    /// Over a transport of the caller's own. Of the settings, those that concern no connection are
    /// in force: the limits of bodies and the observer.
    explicit Manager(std::shared_ptr<Transport> transport, const TransportSettings& settings = {});
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    /// Sends a request whose response is gathered in memory.
    std::shared_ptr<Request> request(const URLRequestConvertible& convertible);

    /// As `request`, with `data` as the body in place of any that the request has.
    std::shared_ptr<Request> upload(const URLRequestConvertible& convertible, Data data);

    /// Sends a request whose response becomes a file. It is written beside the destination, flushed
    /// and renamed over it: unless the download succeeds, the destination stays as it was. A
    /// download keeps a response with a status of 200 to 299, but not 204, 205, nor a 206 without
    /// a Range field in the request; any other status is the error `HTTPStatus`.
    std::shared_ptr<Request> download(const URLRequestConvertible& convertible,
                                      Destination destination);
    /// As above, to a destination that does not depend on the response.
    std::shared_ptr<Request> download(const URLRequestConvertible& convertible, URL destination);

private:
    std::shared_ptr<Request> start(URLRequest request, TransferKind kind, Request::Counts counts,
                                   std::unique_ptr<BodySink> sink);

    std::unique_ptr<BodySink> memorySink() const;

    const TransportSettings _settings;
    const ResponseQueues _queues;
    const std::shared_ptr<Transport> _transport;
};

} // namespace KeloAPI
