#include "Files.hpp"

#include "Host.hpp"

#include <QImageReader>
#include <QThreadPool>

namespace KeloViewer {

using namespace KeloAPI;

namespace {

constexpr int mostFilesOfAKind = 200;

/// A file's place goes by its name alone, so that each kind has a cache of its own: the URL
/// ".../thumbnails/x.png" goes to "/thumbnails/".
std::string kindOf(const std::string& url) {
    const std::size_t end = url.rfind('/');
    const std::size_t start = end == std::string::npos ? end : url.rfind('/', end - 1);
    return start == std::string::npos ? "other" : url.substr(start + 1, end - start - 1);
}

std::shared_ptr<FileManager> cacheOf(const std::string& kind) {
    return FileManager::sharedGroupManager("/" + kind + "/");
}

/// One picture on its way. It ends on whichever thread reads the file. Without a network it waits
/// for that to come back, as nobody would ask for the picture again.
class PictureResponse : public QQuickImageResponse {
public:
    PictureResponse(std::string url, QSize size)
        : _url(std::move(url))
        , _size(size) {
        MainQueue::main().async([this] { fetch(); });
    }

    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(_picture);
    }

private:
    void fetch() {
        fetchFile(_url, QueuePriority::Normal, [this](const QString& path) {
            Host& host = Host::shared();
            if (path.isEmpty() && host.offline()) {
                connect(
                    &host, &Host::retryWanted, &host, [this] { fetch(); },
                    Qt::SingleShotConnection);
            } else {
                QThreadPool::globalInstance()->start([this, path] { read(path); });
            }
        });
    }

    void read(const QString& path) {
        if (!path.isEmpty()) {
            QImageReader reader(path);
            reader.setScaledSize(_size);
            _picture = reader.read();
        }
        Q_EMIT finished();
    }

    const std::string _url;
    const QSize _size;
    QImage _picture;
};

} // namespace

void fetchFile(const std::string& url, QueuePriority priority, HearFile hear) {
    const std::string kind = kindOf(url);
    const auto file = FileEndpoint::create(url, cacheOf(kind));
    const auto place = file->documentsFile();
    if (!place) {
        hear({});
        return;
    }
    FileQueue::withKey(kind)->download(
        file, *place, priority, [file, hear = std::move(hear)](const FileDownloadResult& result) {
            if (const Error* error = result.error()) {
                Host::shared().hearOfFile(*error);
                hear({});
                return;
            }
            hear(QString::fromStdString(file->localUrl()->filePath().value_or("")));
        });
}

std::size_t videosInQueue() {
    return FileQueue::withKey("videos")->queuedFiles().size();
}

void forgetQueuedVideos() {
    FileQueue::withKey("videos")->kill();
}

void trimFiles() {
    for (const char* kind : {"videos", "thumbnails", "avatars"}) {
        cacheOf(kind)->cleanDirectory(mostFilesOfAKind);
    }
}

QQuickImageResponse* PictureProvider::requestImageResponse(const QString& id, const QSize& size) {
    return new PictureResponse(id.toStdString(), size);
}

} // namespace KeloViewer
