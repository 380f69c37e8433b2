#pragma once

#include "Events.hpp"
#include "Progress.hpp"
#include "SegmentedFile.hpp"

#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KeloHost {

class Host;
class Failure;

/// Uploads one file and follows its processing to the end:
///  1. It begins an upload session and sends the file's segments, some at a time, each with an
///     endpoint of its own and from a buffer that goes as soon as it is sent.
///  2. A segment whose connection fails, or whose server does (5xx), is sent again after a short
///     wait, three times in all. The same holds for ending the upload and for asking.
///  3. Where the session is refused, the library sends the call again once the user has signed in,
///     but without the segment's bytes: whatever comes of that, the segment is sent once more. No
///     others begin as long as one waits for that.
///  4. It ends the upload and asks how far the service is, as often as the service wants.
/// At Ctrl-C it cancels what is under way, and the program ends when that has ended.
class Uploader : public std::enable_shared_from_this<Uploader> {
public:
    Uploader(std::shared_ptr<Host> host, std::unique_ptr<SegmentedFile> file,
             std::int64_t parallel);

    void start();

private:
    struct Segment {
        std::int64_t index = 0;
        int tries = 0;
        /// Bytes sent so far.
        double sent = 0;
        /// The session was refused: the next completion is that of the call without the bytes.
        bool isRefused = false;
        /// Null when nothing is under way that could be cancelled.
        std::shared_ptr<KeloAPI::EndpointRequest> handle;
    };
    using SegmentPointer = std::shared_ptr<Segment>;
    using Again = void (Uploader::*)();

    void begin();
    void sendMore();
    void send(const SegmentPointer& segment);
    void segmentEnded(const SegmentPointer& segment, const std::optional<KeloAPI::Error>& error);
    void sendSoon(const SegmentPointer& segment, Events::Seconds wait);
    void leave(const SegmentPointer& segment);
    void finalize();
    void ask();
    void heard(const std::shared_ptr<KeloAPI::KLVideoUpload>& upload);

    /// The completion of a call that is no segment.
    KeloAPI::LongformUploadEndpoint::Completion
    completion(Again again, void (Uploader::*next)(const std::shared_ptr<KeloAPI::KLVideoUpload>&));
    void begun(const std::shared_ptr<KeloAPI::KLVideoUpload>& upload);
    /// Calls that are under way with the session key of their start.
    std::int64_t callsUnderWay() const;
    bool isAnyRefused() const;
    bool mayTryAgain(const KeloAPI::Error& error, int tries) const;

    void interrupt();
    void endInterrupted();
    /// Nothing is shown or begun any more.
    void close();
    void fail(const KeloAPI::Error& error);
    void fail(const Failure& failure);
    std::string whatBecameOfIt() const;
    void showProgress();
    void showProcessing(const KeloAPI::KLVideoUploadProcessingInfo& info);

    const std::shared_ptr<Host> _host;
    const std::unique_ptr<SegmentedFile> _file;
    const std::size_t _parallel;
    Progress _progress{true};
    Events _events;
    std::string _mediaId;
    /// The first segment that was not begun yet.
    std::int64_t _next = 0;
    std::vector<SegmentPointer> _underWay;
    std::int64_t _bytesDone = 0;
    /// Of the call under way that is no segment.
    std::shared_ptr<KeloAPI::EndpointRequest> _call;
    int _tries = 0;
    /// All segments have arrived, and the service is told so.
    bool _isSent = false;
    bool _isFinalized = false;
    bool _isInterrupted = false;
    bool _hasEnded = false;
    std::string _shown;
};

} // namespace KeloHost
