#pragma once

#include <KeloAPI/http/internal/BodySink.hpp>
#include <KeloAPI/http/internal/DownloadFile.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <utility>

namespace KeloAPI {

/// Makes a file of a body, where the response is all that was asked for.
class FileSink final : public BodySink {
public:
    /// `partAllowed`: whether a part of the file was asked for.
    FileSink(Manager::Destination destination, bool partAllowed)
        : _destination(std::move(destination))
        , _partAllowed(partAllowed) {}

    void begin(const HTTPResponse& head) override;
    bool take(std::string_view bytes) override;
    std::optional<Error> finish(std::optional<Error> error) override;
    const std::string& body() const override { return _noBody; }

private:
    bool isWhole(int status) const;

    Manager::Destination _destination;
    const bool _partAllowed;
    bool _begun = false;
    std::optional<DownloadFile> _file;
    /// Why the response is not kept; it outranks what the transport says.
    std::optional<Error> _refusal;
    const std::string _noBody;
};

} // namespace KeloAPI
