#include <KeloAPI/http/internal/DownloadRequest.hpp>
#include <KeloAPI/http/internal/makeTransport.hpp>
#include <KeloAPI/http/internal/MemoryRequest.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <utility>

namespace KeloAPI {

Manager::Manager(const ServerTrustPolicyManager& trust, const TransportSettings& settings)
    : Manager(makeTransport(trust, settings)) {}

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
