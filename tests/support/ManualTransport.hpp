#pragma once

#include "FixedRequest.hpp"

#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/Transport.hpp>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace KeloAPI::testing {

/// A transport that a test moves by hand, step by step. One exchange at a time; each step runs on a
/// thread of its own, as those of a real transport do not run on the caller's.
class ManualTransport : public Transport {
public:
    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> newObserver,
                                    TransferKind /*kind*/) override {
        requests.push_back(request);
        observer = std::move(newObserver);
        return std::make_shared<Handle>(*this);
    }

    void head(int status, std::int64_t length = -1, HeaderFields fields = {}) {
        const HTTPResponse response{*requests.back().url, status, std::move(fields), length};
        step([&] { observer->didReceiveResponse(response); });
    }
    bool data(std::string_view bytes) {
        bool wanted = false;
        step([&] { wanted = observer->didReceiveData(bytes); });
        return wanted;
    }
    void sent(std::int64_t bytes, std::int64_t total) {
        step([&] { observer->didSendBody(bytes, total); });
    }
    void complete(std::optional<Error> error = {}) {
        step([&] {
            observer->didComplete(std::move(error));
            observer = nullptr;
        });
    }
    /// A whole answer.
    void answer(std::string_view body, int status = 200) {
        head(status, static_cast<std::int64_t>(body.size()));
        data(body);
        complete();
    }

    std::vector<URLRequest> requests;
    std::shared_ptr<ExchangeObserver> observer;
    int cancelCount = 0;

private:
    class Handle final : public Exchange {
    public:
        explicit Handle(ManualTransport& transport)
            : _transport(transport) {}
        void cancel() override { ++_transport.cancelCount; }

    private:
        ManualTransport& _transport;
    };

    template <class Step>
    static void step(const Step& work) {
        std::thread(work).join();
    }
};

} // namespace KeloAPI::testing
