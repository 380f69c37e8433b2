#pragma once

#include <KeloAPI/http/Request.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace KeloAPI {

/// A request whose answer is gathered in memory.
class MemoryRequest final : public Request {
public:
    /// What its progress counts.
    enum class Reports : std::uint8_t { BytesReceived, BytesSent };

    MemoryRequest(KeloAPI::URLRequest request, Reports reports,
                  std::shared_ptr<SerialQueue> responseQueue)
        : Request(std::move(request), std::move(responseQueue))
        , _reports(reports) {}
    ~MemoryRequest() override;

private:
    void receiveResponse(const HTTPResponse& response) override;
    bool receiveData(std::string_view bytes) override;
    void bodySent(std::int64_t sent, std::int64_t total) override;
    std::optional<Error> finish(std::optional<Error> error) override;

    const Reports _reports;
    std::size_t _counted = 0;
    /// Why the answer is not kept.
    std::optional<Error> _refusal;
};

} // namespace KeloAPI
