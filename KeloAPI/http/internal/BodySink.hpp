#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/http/Transport.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI {

/// Where the body of a response goes. Called on the network thread, but for `finish`.
class BodySink {
public:
    BodySink() = default;
    BodySink(const BodySink&) = delete;
    BodySink& operator=(const BodySink&) = delete;
    virtual ~BodySink() = default;

    virtual void begin(const HTTPResponse& head) = 0;
    /// False gives the exchange up.
    virtual bool take(std::string_view bytes) = 0;
    /// The last step: the error that the request ends with, if any. Where it finds no memory it is
    /// called again, with that error.
    virtual std::optional<Error> finish(std::optional<Error> error) = 0;
    /// What is in memory.
    virtual const std::string& body() const = 0;
};

} // namespace KeloAPI
