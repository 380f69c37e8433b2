#pragma once

#include <KeloAPI/http/internal/BodySink.hpp>

#include <cstddef>

namespace KeloAPI {

/// Gathers a body in memory, with room behind it for the JSON reader.
class MemorySink final : public BodySink {
public:
    /// Bytes in this body, and in all bodies of the process.
    MemorySink(std::size_t maxBytes, std::size_t maxBytesInProcess)
        : _maxBytes(maxBytes)
        , _maxBytesInProcess(maxBytesInProcess) {}
    ~MemorySink() override;

    void begin(const HTTPResponse& head) override;
    bool take(std::string_view bytes) override;
    std::optional<Error> finish(std::optional<Error> error) override;
    const std::string& body() const override { return _body; }

private:
    const std::size_t _maxBytes;
    const std::size_t _maxBytesInProcess;
    std::string _body;
    std::size_t _counted = 0;
    /// Why the response is not kept.
    std::optional<Error> _refusal;
};

} // namespace KeloAPI
