#include <KeloAPI/http/internal/FileSink.hpp>
#include <KeloAPI/http/internal/makeTransport.hpp>
#include <KeloAPI/http/internal/MemorySink.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/json/internal/JsonReader.hpp>

#include <utility>

namespace KeloAPI {

Manager::Manager(const ServerTrustPolicyManager& trust, const TransportSettings& settings)
    : Manager(makeTransport(trust, settings), settings) {}

Manager::Manager(std::shared_ptr<Transport> transport, const TransportSettings& settings)
    : _settings(settings)
    , _queues{std::make_shared<SerialQueue>("KeloAPI.models"),
              std::make_shared<SerialQueue>("KeloAPI.response")}
    , _transport(std::move(transport)) {
    initialiseJsonReader();
}

std::shared_ptr<Request> Manager::request(const URLRequestConvertible& convertible) {
    return start(convertible.URLRequest(), TransferKind::Call, Request::Counts::BytesReceived,
                 memorySink());
}

std::shared_ptr<Request> Manager::upload(const URLRequestConvertible& convertible, Data data) {
    URLRequest request = convertible.URLRequest();
    request.body = std::move(data);
    return start(std::move(request), TransferKind::Call, Request::Counts::BytesSent, memorySink());
}

std::shared_ptr<Request> Manager::download(const URLRequestConvertible& convertible,
                                           Destination destination) {
    URLRequest request = convertible.URLRequest();
    auto sink =
        std::make_unique<FileSink>(std::move(destination), request.headerFields.contains("Range"));
    return start(std::move(request), TransferKind::Download, Request::Counts::BytesReceived,
                 std::move(sink));
}

std::shared_ptr<Request> Manager::download(const URLRequestConvertible& convertible,
                                           URL destination) {
    return download(convertible, [destination = std::move(destination)](const HTTPResponse&) {
        return destination;
    });
}

std::unique_ptr<BodySink> Manager::memorySink() const {
    return std::make_unique<MemorySink>(_settings.maxBodyBytes, _settings.maxBodyBytesInProcess);
}

std::shared_ptr<Request> Manager::start(URLRequest request, TransferKind kind,
                                        Request::Counts counts, std::unique_ptr<BodySink> sink) {
    std::shared_ptr<Request> made(new Request(std::move(request), kind, counts, std::move(sink),
                                              _queues, _settings.observer));
    made->start(*_transport);
    return made;
}

} // namespace KeloAPI
