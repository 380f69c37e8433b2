#include "RemoteFile.hpp"

#include "Host.hpp"

using namespace KeloAPI;

namespace {

constexpr int mostFilesOfAKind = 200;
/// More videos than that are waiting only after long scrolling: most of them are far away by then.
constexpr std::size_t mostVideosWaiting = 6;

std::shared_ptr<FileManager> cacheOf(const std::string& kind) {
    return FileManager::sharedGroupManager("/" + kind + "/");
}

} // namespace

RemoteFile::RemoteFile() {
    connect(this, &RemoteFile::urlChanged, this, [this] {
        _file.clear();
        Q_EMIT fileChanged();
        fetch();
    });
    connect(&Host::shared(), &Host::retryWanted, this, [this] { fetch(); });
}

void RemoteFile::fetch() {
    if (!_file.isEmpty()) {
        return;
    }
    fetch(_url, QueuePriority::High, [self = QPointer(this), url = _url](const QUrl& file) {
        if (self && url == self->_url) {
            self->_file = file;
            Q_EMIT self->fileChanged();
        }
    });
}

void RemoteFile::fetch(const QString& url, QueuePriority priority, const Hear& hear) {
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

void RemoteFile::forgetVideosFarAway() {
    const auto videos = FileQueue::withKey("videos");
    if (videos->queuedFiles().size() > mostVideosWaiting) {
        videos->kill();
    }
}

void RemoteFile::trim() {
    for (const char* kind : {"videos", "thumbnails", "avatars"}) {
        cacheOf(kind)->cleanDirectory(mostFilesOfAKind);
    }
}
