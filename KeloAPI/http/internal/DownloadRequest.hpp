#pragma once

#include <KeloAPI/http/internal/DownloadFile.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/http/Request.hpp>

#include <cstdint>
#include <optional>
#include <utility>
#include <variant>

namespace KeloAPI {

/// A request whose answer becomes a file.
class DownloadRequest final : public Request {
public:
    using Destination = std::variant<URL, Manager::Destination>;

    DownloadRequest(KeloAPI::URLRequest request, Destination destination,
                    std::shared_ptr<SerialQueue> responseQueue)
        : Request(std::move(request), std::move(responseQueue))
        , _destination(std::move(destination)) {}

private:
    void requestSent() override;
    void receiveResponse(const HTTPResponse& response) override;
    bool receiveData(std::string_view bytes) override;
    void bodySent(std::int64_t, std::int64_t) override {}
    std::optional<Error> finish(std::optional<Error> error) override;
    bool mayWaitForDisk() const override { return true; }

    void open(const URL& destination);

    Destination _destination;
    std::optional<DownloadFile> _file;
    std::int64_t _received = 0;
    /// Why an answer is not kept; once there is one, it outranks what the transport says of it.
    std::optional<Error> _refusal;
};

} // namespace KeloAPI
