#include "Uploader.hpp"

#include "commands/Commands.hpp"
#include "RecordText.hpp"
#include "TextForms.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <algorithm>
#include <utility>

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

Events::Seconds waitAfter(int tries) {
    return Events::Seconds(firstWait * tries);
}

} // namespace

Uploader::Uploader(std::shared_ptr<Host> host, std::unique_ptr<SegmentedFile> file,
                   std::int64_t parallel)
    : _host(std::move(host))
    , _file(std::move(file))
    , _parallel(static_cast<std::size_t>(parallel)) {}

void Uploader::start() {
    _events.atInterruption([self = shared_from_this()] { self->interrupt(); });
    _host->setCallsUnderWay([weak = weak_from_this()] {
        const auto self = weak.lock();
        return self ? self->callsUnderWay() : 0;
    });
    begin();
}

void Uploader::begin() {
    _call = LongformUploadEndpoint::create()->initiateUpload(
        _file->size(), completion(&Uploader::begin, &Uploader::begun));
}

void Uploader::begun(const std::shared_ptr<KLVideoUpload>& upload) {
    _mediaId = upload->mediaId();
    showProgress();
    sendMore();
}

void Uploader::sendMore() {
    if (_hasEnded || _isInterrupted || isAnyRefused()) {
        return;
    }
    while (_underWay.size() < _parallel && _next < _file->segments()) {
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

void Uploader::send(const SegmentPointer& segment) {
    if (_hasEnded || _isInterrupted) {
        return;
    }
    try {
        ++segment->tries;
        segment->handle = LongformUploadEndpoint::create()->uploadSegment(
            _mediaId, _file->read(segment->index), segment->index,
            [self = shared_from_this(), segment](const std::optional<Error>& error) {
                self->segmentEnded(segment, error);
            });
    } catch (const Failure& failure) {
        fail(failure);
        return;
    }
    segment->handle->setProgressHandler(
        [self = shared_from_this(), segment](EndpointRequest&, double fraction) {
            segment->sent = fraction * static_cast<double>(self->_file->sizeOf(segment->index));
            self->showProgress();
        });
}

void Uploader::segmentEnded(const SegmentPointer& segment, const std::optional<Error>& error) {
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
        sendSoon(segment, Events::Seconds(0));
    } else if (!error) {
        _host->sessionWorks();
        _bytesDone += _file->sizeOf(segment->index);
        leave(segment);
        showProgress();
        // Put off until the library has let the segment's buffer go.
        MainQueue::main().async([self = shared_from_this()] { self->sendMore(); });
    } else if (mayTryAgain(*error, segment->tries)) {
        segment->sent = 0;
        sendSoon(segment, waitAfter(segment->tries));
    } else {
        fail(*error);
    }
}

void Uploader::sendSoon(const SegmentPointer& segment, Events::Seconds wait) {
    _events.after(wait, [self = shared_from_this(), segment] {
        self->send(segment);
        self->sendMore();
    });
}

void Uploader::leave(const SegmentPointer& segment) {
    _underWay.erase(std::find(_underWay.begin(), _underWay.end(), segment));
}

void Uploader::finalize() {
    _call = LongformUploadEndpoint::create()->finalizeUpload(
        _mediaId, completion(&Uploader::finalize, &Uploader::heard));
}

void Uploader::ask() {
    _call = LongformUploadEndpoint::create()->checkStatus(
        _mediaId, completion(&Uploader::ask, &Uploader::heard));
}

void Uploader::heard(const std::shared_ptr<KLVideoUpload>& upload) {
    _isFinalized = true;
    const auto info = upload->processingInfo;
    if (info && info->state() == KLVideoUploadProcessingState::Failed) {
        fail(Failure(ExitCode::Failed, "the service cannot process the video: upload " +
                                           upload->mediaId() + " " +
                                           std::string(rawValue(info->state()))));
        return;
    }
    if (info && info->state() == KLVideoUploadProcessingState::Succeeded) {
        close();
        _host->show({{"mediaId", upload->mediaId()},
                     {"state", std::string(rawValue(info->state()))},
                     {"size", valueOf(upload->size)}},
                    linesOf(*upload));
        return;
    }
    if (info) {
        showProcessing(*info);
    }
    const double wait = info ? info->checkAfterSeconds.value_or(usualWait) : usualWait;
    _events.after(Events::Seconds(std::clamp(wait, 0.0, longestWait)), [self = shared_from_this()] {
        if (!self->_hasEnded && !self->_isInterrupted) {
            self->ask();
        }
    });
}

LongformUploadEndpoint::Completion
Uploader::completion(Again again, void (Uploader::*next)(const std::shared_ptr<KLVideoUpload>&)) {
    ++_tries;
    return [self = shared_from_this(), again, next](const std::shared_ptr<KLVideoUpload>& upload,
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
            self->fail(Failure(ExitCode::Failed, "the service names no upload"));
        } else if (self->_host->hearsAgain(*error)) {
            return;
        } else if (self->mayTryAgain(*error, self->_tries)) {
            self->_events.after(waitAfter(self->_tries), [self, again] {
                if (!self->_hasEnded && !self->_isInterrupted) {
                    (*self.*again)();
                }
            });
        } else {
            self->fail(*error);
        }
    };
}

std::int64_t Uploader::callsUnderWay() const {
    return std::count_if(_underWay.begin(), _underWay.end(),
                         [](const SegmentPointer& segment) { return segment->handle != nullptr; });
}

bool Uploader::isAnyRefused() const {
    return std::any_of(_underWay.begin(), _underWay.end(),
                       [](const SegmentPointer& segment) { return segment->isRefused; });
}

bool Uploader::mayTryAgain(const Error& error, int tries) const {
    return isPassing(error) && tries < mostTries;
}

void Uploader::interrupt() {
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

void Uploader::endInterrupted() {
    // Each call that was cancelled still tells of its end.
    if (callsUnderWay() == 0 && !_call) {
        fail(Failure(ExitCode::Interrupted, "interrupted; " + whatBecameOfIt()));
    }
}

std::string Uploader::whatBecameOfIt() const {
    if (_isFinalized) {
        return "the service has the video and goes on with it";
    }
    return _isSent ? "the service may have the video, as upload " + _mediaId
                   : "the video is not uploaded";
}

void Uploader::close() {
    _progress.clear();
    _hasEnded = true;
    _events.clear();
}

void Uploader::fail(const Error& error) {
    close();
    _host->fail(error);
}

void Uploader::fail(const Failure& failure) {
    close();
    _host->end(failure);
}

void Uploader::showProgress() {
    double sent = static_cast<double>(_bytesDone);
    for (const SegmentPointer& segment : _underWay) {
        sent += segment->sent;
    }
    const auto all = static_cast<double>(_file->size());
    const std::string line = barText(sent, all) + " " + percentText(sent, all) +
                             formatted(", %.1f of %.1f MB", sent / 1e6, all / 1e6);
    if (line != _shown && !_hasEnded && !_isInterrupted) {
        _shown = line;
        _progress.show({line});
    }
}

void Uploader::showProcessing(const KLVideoUploadProcessingInfo& info) {
    const double percent = std::clamp(info.progressPercent.value_or(0), 0.0, 100.0);
    _progress.show(
        {barText(percent, 100) + " " + percentText(percent, 100) + ", the service is at work"});
}

void uploadVideo(const HostPointer& host, const Arguments& arguments) {
    auto file =
        std::make_unique<SegmentedFile>(arguments.text("FILE"), arguments.number("--segment-size"));
    std::make_shared<Uploader>(host, std::move(file), arguments.number("--parallel"))->start();
}

} // namespace KeloHost
