#pragma once

#include <KeloAPI/fakes/Cassette.hpp>
#include <KeloAPI/http/Transport.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KeloAPI::fakes {

/// What a request must be like to get a recorded response.
enum class Playback : std::uint8_t {
    /// Requests come in the recorded order, with the same method, URL and body. For code that
    /// sends one request after another.
    Strict,
    /// The method, path and query are recorded ones, whatever the host, the body and the order.
    /// Responses of one route come in the order in which they were recorded, and the last one
    /// again and again.
    ByRoute
};

/// Plays a cassette back, without a network. Secrets are blanked in requests as they were when the
/// cassette was recorded, so those of the test may be others; header fields are not compared.
///
/// A request that does not fit ends with `CassetteErrorCode::UnexpectedRequest` and a text that
/// says what was expected and what came; the strict order then waits for the request that was
/// expected. Responses come at once, in one piece. Usable from any thread.
class KELO_API PlaybackTransport final : public Transport {
public:
    /// Takes what is in the cassette now. A null one stops the process.
    PlaybackTransport(const std::shared_ptr<const Cassette>& cassette, Playback playback);
    ~PlaybackTransport() override;

    /// The errors' texts of the requests that did not fit, oldest first.
    std::vector<std::string> unexpectedRequests() const;
    /// How many recorded exchanges have not been played.
    std::size_t unplayedCount() const;

    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind kind = TransferKind::Call) override;

private:
    struct State;
    const std::unique_ptr<State> _state;
};

} // namespace KeloAPI::fakes
