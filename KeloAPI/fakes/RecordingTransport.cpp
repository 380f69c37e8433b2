#include <KeloAPI/fakes/internal/CassetteContents.hpp>
#include <KeloAPI/fakes/RecordingTransport.hpp>
#include <KeloAPI/http/internal/makeTransport.hpp>

#include <utility>

namespace KeloAPI::fakes {

class RecordingTransport::Observer final : public ExchangeObserver {
public:
    Observer(std::shared_ptr<Cassette> cassette, const URLRequest& request,
             std::shared_ptr<ExchangeObserver> observer)
        : _cassette(std::move(cassette))
        , _place(_cassette->_contents->begin(request))
        , _observer(std::move(observer))
        , _body(_cassette->_contents->maxBodyBytes) {}

    void didReceiveResponse(HTTPResponse response) override {
        _head = response;
        _observer->didReceiveResponse(std::move(response));
    }
    bool didReceiveData(std::string_view bytes) override {
        _body.append(bytes);
        return _observer->didReceiveData(bytes);
    }
    void didSendBody(std::int64_t sent, std::int64_t total) override {
        _observer->didSendBody(sent, total);
    }
    void didFinishHop(const HopReport& hop) override { _observer->didFinishHop(hop); }
    void didComplete(std::optional<Error> error) override {
        _cassette->_contents->end(_place, _head, _body, error);
        _observer->didComplete(std::move(error));
    }

private:
    const std::shared_ptr<Cassette> _cassette;
    const std::size_t _place;
    const std::shared_ptr<ExchangeObserver> _observer;
    std::optional<HTTPResponse> _head;
    BodyRecorder _body;
};

RecordingTransport::RecordingTransport(std::shared_ptr<Transport> transport,
                                       std::shared_ptr<Cassette> cassette)
    : _transport(std::move(transport))
    , _cassette(std::move(cassette)) {}

RecordingTransport::RecordingTransport(const ServerTrustPolicyManager& trust,
                                       std::shared_ptr<Cassette> cassette,
                                       const TransportSettings& settings)
    : RecordingTransport(makeTransport(trust, settings), std::move(cassette)) {}

std::shared_ptr<Exchange> RecordingTransport::start(const URLRequest& request,
                                                    std::shared_ptr<ExchangeObserver> observer,
                                                    TransferKind kind) {
    return _transport->start(
        request, std::make_shared<Observer>(_cassette, request, std::move(observer)), kind);
}

} // namespace KeloAPI::fakes
