// Uploads one video file in segments, one after another.
#pragma once

#include <KeloAPI/async.hpp>

#include <qqmlregistration.h>

#include <QObject>

class Uploader : public QObject {
    Q_OBJECT
    QML_ELEMENT
    /// "idle", "uploading", "processing", "done", "cancelled" or "failed".
    Q_PROPERTY(QString state MEMBER _state NOTIFY changed)
    /// 0 to 1, of the upload and then of the service's work on the video.
    Q_PROPERTY(double progress MEMBER _progress NOTIFY changed)
    Q_PROPERTY(QString problem MEMBER _problem NOTIFY changed)

public:
    Uploader();

    /// Begins with the file of a path or a file URL.
    Q_INVOKABLE void start(const QString& file);
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void changed();

private:
    KeloAPI::async::Task<> upload(QString path);
    bool hasUpload(const KeloAPI::async::UploadResult& result);
    bool isProcessed(const KeloAPI::KLVideoUpload& upload);
    void fail(const KeloAPI::Error& error);
    void show(const QString& state, double progress = 0, const QString& problem = {});

    QString _state = "idle";
    double _progress = 0;
    QString _problem;
    bool _isSentAgain = false; // by the library, after a sheet
    std::optional<KeloAPI::async::Task<>> _task;
};
