// A file of the service, fetched once and kept in the library's cache.
#pragma once

#include "Host.hpp"

#include <qqmlregistration.h>

#include <QUrl>

class RemoteFile : public QObject {
    Q_OBJECT
    QML_ELEMENT
    /// Where the service has it; empty for none. The file is fetched as soon as this is set.
    Q_PROPERTY(QString url MEMBER _url NOTIFY urlChanged)
    /// Where it lies on this machine; empty until it is there.
    Q_PROPERTY(QUrl file MEMBER _file NOTIFY fileChanged)

public:
    RemoteFile() {
        connect(this, &RemoteFile::urlChanged, this, [this] {
            setFile({});
            fetchOwn();
        });
        connect(&Host::shared(), &Host::retryWanted, this, &RemoteFile::fetchOwn);
    }

    /// Fetches through the queue of the file's kind. Hears on the main thread where the file is,
    /// and nothing where it could not be fetched.
    static void fetch(const QString& url, KeloAPI::QueuePriority priority,
                      const std::function<void(const QUrl& file)>& hear) {
        using namespace KeloAPI;
        // A file's place goes by its name alone, so that each kind has a cache of its own: the URL
        // ".../thumbnails/x.png" goes to "/thumbnails/".
        const std::string kind = url.section('/', -2, -2).toStdString();
        const auto file = FileEndpoint::create(url.toStdString(), cacheOf(kind));
        const auto place = file->documentsFile();
        if (url.isEmpty() || !place) {
            return;
        }
        FileQueue::withKey(kind)->download(
            file, *place, priority, [file, hear](const FileDownloadResult& result) {
                if (const Error* error = result.error()) {
                    Host::shared().noteLostNetwork(*error);
                } else {
                    hear(QString::fromStdString(file->localUrl()->absoluteString()));
                }
            });
    }

    /// Gives up the videos that wait, where those are many: that is so only after long scrolling,
    /// and most of them are far away. Nobody hears of them.
    static void forgetVideosFarAway() {
        const auto videos = KeloAPI::FileQueue::withKey("videos");
        if (videos->queuedFiles().size() > 6) {
            videos->kill();
        }
    }

    /// Deletes all but the newest files, when nothing is shown.
    static void trim() {
        for (const char* kind : {"videos", "thumbnails", "avatars"}) {
            cacheOf(kind)->cleanDirectory(200);
        }
    }

Q_SIGNALS:
    void urlChanged();
    void fileChanged();

private:
    static std::shared_ptr<KeloAPI::FileManager> cacheOf(const std::string& kind) {
        return KeloAPI::FileManager::sharedGroupManager("/" + kind + "/");
    }

    void fetchOwn() {
        if (_file.isEmpty()) {
            fetch(_url, KeloAPI::QueuePriority::High,
                  [self = QPointer(this), url = _url](const QUrl& file) {
                      if (self && url == self->_url) {
                          self->setFile(file);
                      }
                  });
        }
    }

    void setFile(const QUrl& file) {
        _file = file;
        Q_EMIT fileChanged();
    }

    QString _url;
    QUrl _file;
};
