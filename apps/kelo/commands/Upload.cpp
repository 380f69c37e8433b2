#include "commands/Commands.hpp"
#include "Loop.hpp"
#include "Progress.hpp"
#include "Records.hpp"
#include "SegmentedFile.hpp"

#include <algorithm>

namespace KeloHost {

using namespace KeloAPI;

namespace {

constexpr int mostTries = 3;
constexpr double firstWait = 0.5;
/// Where the service does not say how long to wait.
constexpr double usualWait = 1;
/// A year: longer than anybody waits, and within what clocks can tell.
constexpr double longestWait = 365.0 * 24 * 3600;

/// Errors that another try may not meet: of the connection, or of the server itself.
bool isPassing(const Error& error) {
    if (error.domain() == HTTPErrorDomain) {
        switch (static_cast<HTTPErrorCode>(error.code())) {
        case HTTPErrorCode::TimedOut:
        case HTTPErrorCode::CannotConnect:
        case HTTPErrorCode::ConnectionLost:
        case HTTPErrorCode::BadServerResponse:
        case HTTPErrorCode::BadJson:
        case HTTPErrorCode::EmptyBody:
            return true;
        default:
            return false;
        }
    }
    const std::int64_t code = error.integer(KLAPIStatusCodeKey).value_or(0);
    return code >= 500 && code < 600;
}

Loop::Seconds waitAfter(int tries) {
    return Loop::Seconds(firstWait * tries);
}

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
    Uploader(HostPointer host, const Arguments& arguments)
        : _host(std::move(host))
        , _file(arguments.text("FILE"), arguments.number("--segment-size"))
        , _parallel(static_cast<std::size_t>(arguments.number("--parallel"))) {}

    void start() {
        _host->loop().atInterruption([self = shared_from_this()] { self->interrupt(); });
        _host->setCallsUnderWay([weak = weak_from_this()] {
            const auto self = weak.lock();
            return self ? self->callsUnderWay() : 0;
        });
        begin();
    }

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

    void begin() {
        _call = LongformUploadEndpoint::create()->initiateUpload(
            _file.size(), completion(&Uploader::begin, &Uploader::begun));
    }

    void begun(const std::shared_ptr<KLVideoUpload>& upload) {
        _mediaId = upload->mediaId;
        showProgress();
        sendMore();
    }

    void sendMore() {
        if (isOver() || isAnyRefused()) {
            return;
        }
        while (_underWay.size() < _parallel && _next < _file.segments()) {
            const auto segment = std::make_shared<Segment>();
            segment->index = _next++;
            _underWay.push_back(segment);
            send(segment);
        }
        // Each segment's end comes by here; the last ones may do so together.
        if (_underWay.empty() && !std::exchange(_isSent, true)) {
            finalize();
        }
    }

    void send(const SegmentPointer& segment) {
        if (isOver()) {
            return;
        }
        try {
            ++segment->tries;
            segment->handle = LongformUploadEndpoint::create()->uploadSegment(
                _mediaId, _file.read(segment->index), segment->index,
                [self = shared_from_this(), segment](const std::optional<Error>& error) {
                    self->segmentEnded(segment, error);
                });
        } catch (const Failure& failure) {
            fail(failure);
            return;
        }
        segment->handle->setProgressHandler(
            [self = shared_from_this(), segment](EndpointRequest&, double fraction) {
                segment->sent = fraction * static_cast<double>(self->_file.sizeOf(segment->index));
                self->showProgress();
            });
    }

    void segmentEnded(const SegmentPointer& segment, const std::optional<Error>& error) {
        segment->handle.reset();
        if (_hasEnded) {
            return;
        }
        if (error && _host->hearsAgain(*error)) {
            if (!std::exchange(segment->isRefused, true)) {
                --segment->tries; // the service has not judged the segment
            }
            segment->sent = 0;
            if (_isInterrupted) {
                endInterrupted();
            }
        } else if (_isInterrupted) {
            leave(segment);
            endInterrupted();
        } else if (std::exchange(segment->isRefused, false)) {
            sendSoon(segment, Loop::Seconds(0));
        } else if (!error) {
            _host->sessionWorks();
            _bytesDone += _file.sizeOf(segment->index);
            leave(segment);
            showProgress(Progress::When::Now);
            // Put off until the library has let the segment's buffer go.
            MainQueue::main().async([self = shared_from_this()] { self->sendMore(); });
        } else if (isPassing(*error) && segment->tries < mostTries) {
            segment->sent = 0;
            sendSoon(segment, waitAfter(segment->tries));
        } else {
            fail(*error);
        }
    }

    void sendSoon(const SegmentPointer& segment, Loop::Seconds wait) {
        _host->loop().after(wait, [self = shared_from_this(), segment] {
            self->send(segment);
            self->sendMore();
        });
    }

    void leave(const SegmentPointer& segment) {
        _underWay.erase(std::find(_underWay.begin(), _underWay.end(), segment));
    }

    void finalize() {
        _call = LongformUploadEndpoint::create()->finalizeUpload(
            _mediaId, completion(&Uploader::finalize, &Uploader::heard));
    }

    void ask() {
        _call = LongformUploadEndpoint::create()->checkStatus(
            _mediaId, completion(&Uploader::ask, &Uploader::heard));
    }

    void heard(const std::shared_ptr<KLVideoUpload>& upload) {
        _isFinalized = true;
        const auto info = upload->processingInfo;
        if (info && info->state == KLVideoUploadProcessingState::Failed) {
            fail(Failure(ExitCode::Failed, "the service cannot process the video: upload " +
                                               upload->mediaId + " " +
                                               std::string(rawValue(info->state))));
            return;
        }
        if (info && info->state == KLVideoUploadProcessingState::Succeeded) {
            close();
            _host->show({{"mediaId", upload->mediaId},
                         {"state", std::string(rawValue(info->state))},
                         {"size", valueOf(upload->size)}},
                        linesOf(*upload));
            return;
        }
        if (info) {
            showProcessing(*info);
        }
        const double wait = info ? info->checkAfterSeconds.value_or(usualWait) : usualWait;
        _host->loop().after(Loop::Seconds(std::clamp(wait, 0.0, longestWait)),
                            [self = shared_from_this()] {
                                if (!self->isOver()) {
                                    self->ask();
                                }
                            });
    }

    /// The completion of a call other than a segment's.
    LongformUploadEndpoint::Completion
    completion(Again again, void (Uploader::*next)(const std::shared_ptr<KLVideoUpload>&)) {
        ++_tries;
        return
            [self = shared_from_this(), again, next](const std::shared_ptr<KLVideoUpload>& upload,
                                                     const std::optional<Error>& error) {
                self->_call.reset();
                if (self->_hasEnded) {
                    return;
                }
                if (self->_isInterrupted) {
                    self->endInterrupted();
                } else if (upload) {
                    self->_tries = 0;
                    self->_host->sessionWorks();
                    (*self.*next)(upload);
                } else if (!error) {
                    self->fail(Failure(ExitCode::Failed, "the service sent no upload"));
                } else if (self->_host->hearsAgain(*error)) {
                    return;
                } else if (isPassing(*error) && self->_tries < mostTries) {
                    self->_host->loop().after(waitAfter(self->_tries), [self, again] {
                        if (!self->isOver()) {
                            (*self.*again)();
                        }
                    });
                } else {
                    self->fail(*error);
                }
            };
    }

    /// Segments that are under way with the session key of their start.
    std::int64_t callsUnderWay() const {
        return std::count_if(_underWay.begin(), _underWay.end(), [](const SegmentPointer& segment) {
            return segment->handle != nullptr;
        });
    }

    bool isOver() const { return _hasEnded || _isInterrupted; }

    bool isAnyRefused() const {
        return std::any_of(_underWay.begin(), _underWay.end(),
                           [](const SegmentPointer& segment) { return segment->isRefused; });
    }

    void interrupt() {
        if (_hasEnded) {
            return;
        }
        _isInterrupted = true;
        for (const SegmentPointer& segment : _underWay) {
            if (segment->handle) {
                segment->handle->cancel();
            }
        }
        if (_call) {
            _call->cancel();
        }
        endInterrupted();
    }

    void endInterrupted() {
        // Each call that was cancelled still tells of its end.
        if (callsUnderWay() == 0 && !_call) {
            fail(Failure(ExitCode::Interrupted, "interrupted; " + whatBecameOfIt()));
        }
    }

    std::string whatBecameOfIt() const {
        if (_isFinalized) {
            return "the service has the video and is processing it";
        }
        return _isSent ? "the service may have the video, as upload " + _mediaId
                       : "the video is not uploaded";
    }

    /// Nothing is shown or begun any more.
    void close() {
        _progress.clear();
        _hasEnded = true;
        _host->loop().clear();
    }

    void fail(const Error& error) {
        close();
        _host->fail(error);
    }

    void fail(const Failure& failure) {
        close();
        _host->end(failure);
    }

    void showProgress(Progress::When when = Progress::When::Soon) {
        double sent = static_cast<double>(_bytesDone);
        for (const SegmentPointer& segment : _underWay) {
            sent += segment->sent;
        }
        if (!isOver()) {
            _progress.showBytes(sent, static_cast<double>(_file.size()), when);
        }
    }

    void showProcessing(const KLVideoUploadProcessingInfo& info) {
        const double percent = std::clamp(info.progressPercent.value_or(0), 0.0, 100.0);
        _progress.showShare(percent, 100, ", the service is processing it");
    }

    const HostPointer _host;
    const SegmentedFile _file;
    const std::size_t _parallel;
    Progress _progress;
    std::string _mediaId;
    /// The first segment that was not begun yet.
    std::int64_t _next = 0;
    std::vector<SegmentPointer> _underWay;
    std::int64_t _bytesDone = 0;
    /// Of the call under way that is not a segment's.
    std::shared_ptr<KeloAPI::EndpointRequest> _call;
    int _tries = 0;
    /// All segments have arrived, and the service is told so.
    bool _isSent = false;
    bool _isFinalized = false;
    bool _isInterrupted = false;
    bool _hasEnded = false;
};

} // namespace

void uploadVideo(const HostPointer& host, const Arguments& arguments) {
    std::make_shared<Uploader>(host, arguments)->start();
}

} // namespace KeloHost
