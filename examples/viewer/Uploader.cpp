#include "Uploader.hpp"

#include "Host.hpp"

#include <QPointer>
#include <QTimer>
#include <QUrl>

namespace KeloViewer {

using namespace KeloAPI;

namespace {

constexpr std::int64_t segmentSize = std::int64_t{256} << 10U;

} // namespace

void Uploader::start(const QString& file) {
    cancel();
    _file.close();
    _file.setFileName(file.startsWith("file:") ? QUrl(file).toLocalFile() : file);
    _segment = 0;
    _progress = 0;
    if (!_file.open(QIODevice::ReadOnly) || _file.size() == 0) {
        end("failed", "This file cannot be read.");
        return;
    }
    _state = "uploading";
    Q_EMIT changed();
    _call = LongformUploadEndpoint::create()->initiateUpload(
        _file.size(), completion([this](const KLVideoUpload& upload) {
            _mediaId = upload.mediaId;
            sendSegment();
        }));
}

void Uploader::sendSegment() {
    const std::int64_t start = _segment * segmentSize;
    if (start >= _file.size()) {
        finalize();
        return;
    }
    _file.seek(start);
    const QByteArray bytes = _file.read(segmentSize);
    const auto isRefused = std::make_shared<bool>(false);
    _call = LongformUploadEndpoint::create()->uploadSegment(
        _mediaId, Data(bytes.toStdString()), _segment,
        [self = QPointer(this), isRefused](const std::optional<Error>& error) {
            if (!self || !self->isRunning()) {
                return;
            }
            // After signing in the library sends the call again, but not the segment's bytes.
            const bool wasRefused = std::exchange(*isRefused, error && Host::isForSheet(*error));
            if (wasRefused && !*isRefused) {
                self->sendSegment();
                return;
            }
            self->hear(error, [&] {
                ++self->_segment;
                self->sendSegment();
            });
        });
    _call->setProgressHandler([self = QPointer(this), start, size = bytes.size()](EndpointRequest&,
                                                                                  double fraction) {
        if (self && self->isRunning()) {
            self->_progress = (static_cast<double>(start) + fraction * static_cast<double>(size)) /
                              static_cast<double>(self->_file.size());
            Q_EMIT self->changed();
        }
    });
}

void Uploader::finalize() {
    _state = "processing";
    _progress = 0;
    Q_EMIT changed();
    _call = LongformUploadEndpoint::create()->finalizeUpload(
        _mediaId, completion([this](const KLVideoUpload& upload) { heard(upload); }));
}

void Uploader::ask() {
    if (isRunning()) {
        _call = LongformUploadEndpoint::create()->checkStatus(
            _mediaId, completion([this](const KLVideoUpload& upload) { heard(upload); }));
    }
}

void Uploader::heard(const KLVideoUpload& upload) {
    const auto& info = upload.processingInfo;
    if (info && info->state == KLVideoUploadProcessingState::Succeeded) {
        _progress = 1;
        end("done");
        return;
    }
    if (info && info->state == KLVideoUploadProcessingState::Failed) {
        end("failed", "The service cannot process this video.");
        return;
    }
    _progress = info ? info->progressPercent.value_or(0) / 100 : 0;
    Q_EMIT changed();
    const double wait = info ? info->checkAfterSeconds.value_or(1) : 1;
    QTimer::singleShot(static_cast<int>(std::clamp(wait, 0.05, 60.0) * 1000), this, &Uploader::ask);
}

LongformUploadEndpoint::Completion
Uploader::completion(std::function<void(const KLVideoUpload& upload)> next) {
    return [self = QPointer(this), next = std::move(next)](
               const std::shared_ptr<KLVideoUpload>& upload, const std::optional<Error>& error) {
        if (!self || !self->isRunning()) {
            return;
        }
        self->hear(error, [&] {
            upload ? next(*upload) : self->end("failed", "The service sent no upload.");
        });
    };
}

/// Does `next`, or ends with the error.
void Uploader::hear(const std::optional<Error>& error, const std::function<void()>& next) {
    Host::shared().hear(error, next, [self = QPointer(this), error] {
        if (self) {
            self->end("failed", QString::fromStdString(error->localizedDescription()));
        }
    });
}

void Uploader::cancel() {
    if (isRunning()) {
        end("cancelled");
    }
    if (_call) {
        _call->cancel();
    }
}

void Uploader::end(const QString& state, const QString& problem) {
    _state = state;
    _problem = problem;
    Q_EMIT changed();
}

} // namespace KeloViewer
