#include <KeloAPI/platform/curl/CurlTransport.hpp>
#include <KeloAPI/platform/http/DownloadRequest.hpp>
#include <KeloAPI/platform/http/Manager.hpp>
#include <KeloAPI/platform/http/MemoryRequest.hpp>

#include <utility>

namespace KeloAPI {

Manager::Manager(const ServerTrustPolicyManager& trust, const TransportSettings& settings)
    : Manager(std::make_shared<CurlTransport>(trust, settings)) {}

Manager::Manager(std::shared_ptr<Transport> transport)
    : _responseQueue(std::make_shared<SerialQueue>("KeloAPI.response"))
    , _transport(std::move(transport)) {}

Manager::~Manager() = default;

std::shared_ptr<Request> Manager::request(const URLRequestConvertible& convertible) {
    return started(std::make_shared<MemoryRequest>(
        convertible.URLRequest(), MemoryRequest::Reports::BytesReceived, _responseQueue));
}

std::shared_ptr<Request> Manager::upload(const URLRequestConvertible& convertible, Data data) {
    URLRequest request = convertible.URLRequest();
    request.body = std::move(data);
    return started(std::make_shared<MemoryRequest>(
        std::move(request), MemoryRequest::Reports::BytesSent, _responseQueue));
}

std::shared_ptr<Request> Manager::download(const URLRequestConvertible& convertible,
                                           Destination destination) {
    return started(std::make_shared<DownloadRequest>(convertible.URLRequest(),
                                                     std::move(destination), _responseQueue));
}

std::shared_ptr<Request> Manager::download(const URLRequestConvertible& convertible,
                                           URL destination) {
    return started(std::make_shared<DownloadRequest>(convertible.URLRequest(),
                                                     std::move(destination), _responseQueue));
}

std::shared_ptr<Request> Manager::started(std::shared_ptr<Request> request) {
    request->start(*_transport);
    return request;
}

} // namespace KeloAPI
