#include "Uploader.hpp"

#include "Host.hpp"

#include <algorithm>
#include <QFile>
#include <QTimer>
#include <QUrl>

using namespace KeloAPI;

namespace {

constexpr std::int64_t segmentSize = std::int64_t{64} << 10U;

/// A call that waits for a sheet is awaited until it has been sent again.
constexpr async::Wait wait = async::Wait::AfterRetry;

async::Call<std::optional<Error>> secondsLater(double seconds) {
    return async::Call<std::optional<Error>>([seconds](auto completion) {
        QTimer::singleShot(static_cast<int>(std::clamp(seconds, 0.05, 60.0) * 1000),
                           [completion] { completion({}); });
        return nullptr;
    });
}

} // namespace

Uploader::Uploader() {
    connect(&Host::shared(), &Host::sheetClosed, this, [this](bool sendAgain) {
        _isSentAgain = sendAgain;
        if (!sendAgain) {
            cancel();
        }
    });
}

void Uploader::start(const QString& file) {
    _task.reset();
    _task = upload(file);
}

void Uploader::cancel() {
    if (_task && !_task->isDone()) {
        _task.reset(); // and with it the call that it waits for
        show("cancelled");
    }
}

async::Task<> Uploader::upload(QString path) {
    QFile file(path.startsWith("file:") ? QUrl(path).toLocalFile() : path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0) {
        show("failed", 0, "This file cannot be read.");
        co_return;
    }
    show("uploading");
    const auto endpoint = LongformUploadEndpoint::create();
    auto upload = co_await async::initiateUpload(endpoint, file.size(), wait);
    if (!hasUpload(upload)) {
        co_return;
    }
    const std::string id = upload.value()->mediaId;
    for (std::int64_t segment = 0; segment * segmentSize < file.size();) {
        file.seek(segment * segmentSize);
        const Data bytes(file.read(segmentSize).toStdString());
        _isSentAgain = false;
        const auto error = co_await async::uploadSegment(endpoint, id, bytes, segment, wait);
        if (_isSentAgain) {
            continue; // without its bytes
        }
        if (error) {
            fail(*error);
            co_return;
        }
        ++segment;
        show("uploading", static_cast<double>(file.pos()) / static_cast<double>(file.size()));
    }
    show("processing");
    upload = co_await async::finalizeUpload(endpoint, id, wait);
    while (hasUpload(upload) && !isProcessed(*upload.value())) {
        const auto& info = upload.value()->processingInfo;
        co_await secondsLater(info ? info->checkAfterSeconds.value_or(1) : 1);
        upload = co_await async::checkStatus(endpoint, id, wait);
    }
}

bool Uploader::isProcessed(const KLVideoUpload& upload) {
    using State = KLVideoUploadProcessingState;
    const auto& info = upload.processingInfo;
    const State state = info ? info->state : State::Pending;
    if (state == State::Succeeded) {
        show("done", 1);
    } else if (state == State::Failed) {
        show("failed", 0, "The service cannot process this video.");
    } else {
        show("processing", info ? info->progressPercent.value_or(0) / 100 : 0);
    }
    return _state != "processing";
}

bool Uploader::hasUpload(const async::UploadResult& result) {
    if (!result) {
        fail(result.error());
    } else if (!result.value()) {
        show("failed", 0, "The service sent no upload.");
    }
    return result && result.value();
}

void Uploader::fail(const Error& error) {
    Host::shared().noteLostNetwork(error);
    show("failed", 0, QString::fromStdString(error.localizedDescription()));
}

void Uploader::show(const QString& state, double progress, const QString& problem) {
    _state = state;
    _progress = progress;
    _problem = problem;
    Q_EMIT changed();
}
