#pragma once

#include <KeloAPI/fakes/Cassette.hpp>
#include <KeloAPI/fakes/internal/Blanker.hpp>
#include <KeloAPI/fakes/internal/RecordedExchange.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <cstddef>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace KeloAPI::fakes {

/// The request as a cassette has it.
RecordedRequest blankedRequest(const URLRequest& request, Blanker& blanker,
                               std::size_t maxBodyBytes);

struct Cassette::Contents {
    Contents(SecretNames names, std::size_t bytes)
        : maxBodyBytes(bytes)
        , blanker(std::move(names)) {}

    /// Enters an exchange that starts, and gives its place.
    std::size_t begin(const URLRequest& request);
    void end(std::size_t place, const std::optional<HTTPResponse>& head, const BodyRecorder& body,
             const std::optional<Error>& error);
    /// Those that are over, without any value that was found to be secret until now.
    std::vector<RecordedExchange> finished() const;
    SecretNames secretNames() const;

    const std::size_t maxBodyBytes;
    mutable std::mutex mutex;
    Blanker blanker;
    std::vector<RecordedExchange> exchanges;
};

} // namespace KeloAPI::fakes
