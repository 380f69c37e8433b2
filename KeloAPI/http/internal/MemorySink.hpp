#pragma once

#include <KeloAPI/http/internal/BodySink.hpp>

#include <cstddef>

/// The bytes in the bodies of responses in this process, all together. What a body has reserved
/// beyond its size is not counted: the memory that one takes as it grows may be twice as much, and
/// three times while it moves to a larger place. From any thread.
namespace KeloAPI::BodyMemory {

/// Counts `bytes` more; false, and nothing is counted, where that would be more than `max`.
bool take(std::size_t bytes, std::size_t max);
/// Counts `bytes` less.
void giveBack(std::size_t bytes);

} // namespace KeloAPI::BodyMemory

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
