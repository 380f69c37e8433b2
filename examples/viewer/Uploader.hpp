// Uploads one video file in segments, one after another.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <qqmlregistration.h>

#include <QFile>
#include <QObject>

namespace KeloViewer {

class Uploader : public QObject {
    Q_OBJECT
    QML_ELEMENT
    /// "idle", "uploading", "processing", "done", "cancelled" or "failed".
    Q_PROPERTY(QString state MEMBER _state NOTIFY changed)
    /// 0 to 1, of the upload and then of the service's work on the video.
    Q_PROPERTY(double progress MEMBER _progress NOTIFY changed)
    Q_PROPERTY(QString problem MEMBER _problem NOTIFY changed)

public:
    ~Uploader() override { cancel(); }

    /// Begins with the file of a path or a file URL.
    Q_INVOKABLE void start(const QString& file);
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void changed();

private:
    void sendSegment();
    void finalize();
    void ask();
    void hear(const std::optional<KeloAPI::Error>& error, const std::function<void()>& next);
    void heard(const KeloAPI::KLVideoUpload& upload);
    void end(const QString& state, const QString& problem = {});
    bool isRunning() const { return _state == "uploading" || _state == "processing"; }
    KeloAPI::LongformUploadEndpoint::Completion
    completion(std::function<void(const KeloAPI::KLVideoUpload& upload)> next);

    QString _state = "idle";
    double _progress = 0;
    QString _problem;
    QFile _file;
    std::string _mediaId;
    std::int64_t _segment = 0;
    std::shared_ptr<KeloAPI::EndpointRequest> _call;
};

} // namespace KeloViewer
