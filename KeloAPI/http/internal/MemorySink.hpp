#pragma once

#include <KeloAPI/http/internal/BodySink.hpp>

#include <cstddef>

namespace KeloAPI {

/// Gathers a body in memory, with room behind it for the JSON reader.
class MemorySink final : public BodySink {
public:
    ~MemorySink() override;

    void begin(const HTTPResponse& head) override;
    bool take(std::string_view bytes) override;
    std::optional<Error> finish(std::optional<Error> error) override;
    const std::string& body() const override { return _body; }

private:
    std::string _body;
    std::size_t _counted = 0;
    /// Why the response is not kept.
    std::optional<Error> _refusal;
};

} // namespace KeloAPI
