// Uploads one video file in segments, one after another.
#pragma once

#include "Host.hpp"

#include <KeloAPI/async.hpp>

#include <qqmlregistration.h>

#include <algorithm>
#include <QFile>
#include <QTimer>
#include <QUrl>

class Uploader : public QObject {
    Q_OBJECT
    QML_ELEMENT
    /// "idle", "uploading", "processing", "done", "cancelled", or what went wrong.
    Q_PROPERTY(QString state MEMBER _state NOTIFY changed)
    /// 0 to 1, of the upload and then of the service's work on the video.
    Q_PROPERTY(double progress MEMBER _progress NOTIFY changed)

public:
    Uploader() {
        connect(&Host::shared(), &Host::sheetClosed, this, [this](bool sendAgain) {
            _isSentAgain = sendAgain;
            if (!sendAgain) {
                cancel();
            }
        });
    }

    /// Begins with the file of a path or a file URL.
    Q_INVOKABLE void start(const QString& file) {
        _task.reset();
        _task = upload(file.startsWith("file:") ? QUrl(file).toLocalFile() : file);
    }

    Q_INVOKABLE void cancel() {
        if (_task && !_task->isDone()) {
            _task.reset(); // and with it the call that it waits for
            show("cancelled");
        }
    }

Q_SIGNALS:
    void changed();

private:
    static constexpr std::int64_t segmentSize = std::int64_t{64} << 10U;
    /// A call that waits for a sheet is awaited until it has been sent again.
    static constexpr auto wait = KeloAPI::async::Wait::AfterRetry;

    KeloAPI::async::Task<> upload(QString path) {
        using namespace KeloAPI;
        try {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly) || file.size() == 0) {
                throw failure("This file cannot be read.");
            }
            show("uploading");
            const auto endpoint = LongformUploadEndpoint::create();
            auto upload = uploadOf(co_await async::initiateUpload(endpoint, file.size(), wait));
            for (std::int64_t segment = 0; segment * segmentSize < file.size();) {
                file.seek(segment * segmentSize);
                const Data bytes(file.read(segmentSize).toStdString());
                _isSentAgain = false;
                const auto error =
                    co_await async::uploadSegment(endpoint, upload->mediaId, bytes, segment, wait);
                if (_isSentAgain) {
                    continue; // without its bytes
                }
                if (error) {
                    throw *error;
                }
                ++segment;
                show("uploading", double(file.pos()) / double(file.size()));
            }
            upload = uploadOf(co_await async::finalizeUpload(endpoint, upload->mediaId, wait));
            while (!isProcessed(*upload)) {
                const auto& info = upload->processingInfo;
                co_await secondsLater(info ? info->checkAfterSeconds.value_or(1) : 1);
                upload = uploadOf(co_await async::checkStatus(endpoint, upload->mediaId, wait));
            }
            show("done", 1);
        } catch (const Error& error) {
            Host::shared().noteLostNetwork(error);
            show(QString::fromStdString(error.localizedDescription()));
        }
    }

    bool isProcessed(const KeloAPI::KLVideoUpload& upload) {
        using State = KeloAPI::KLVideoUploadProcessingState;
        const auto& info = upload.processingInfo;
        if (info && info->state == State::Failed) {
            throw failure("The service cannot process this video.");
        }
        show("processing", info ? info->progressPercent.value_or(0) / 100 : 0);
        return info && info->state == State::Succeeded;
    }

    /// Never null: throws what stands in its place.
    static std::shared_ptr<KeloAPI::KLVideoUpload>
    uploadOf(const KeloAPI::async::UploadResult& result) {
        if (!result || !result.value()) {
            throw result ? failure("The service sent no upload.") : result.error();
        }
        return result.value();
    }

    static KeloAPI::Error failure(const char* message) {
        return KeloAPI::Error::withMessage("org.example.kelo-viewer", 0, message);
    }

    static KeloAPI::async::Call<std::optional<KeloAPI::Error>> secondsLater(double seconds) {
        const int milliseconds = static_cast<int>(std::clamp(seconds, 0.05, 60.0) * 1000);
        return KeloAPI::async::Call<std::optional<KeloAPI::Error>>([=](auto completion) {
            QTimer::singleShot(milliseconds, [completion] { completion({}); });
            return nullptr;
        });
    }

    void show(const QString& state, double progress = 0) {
        _state = state;
        _progress = progress;
        Q_EMIT changed();
    }

    QString _state = "idle";
    double _progress = 0;
    bool _isSentAgain = false; // by the library, after a sheet
    std::optional<KeloAPI::async::Task<>> _task;
};
