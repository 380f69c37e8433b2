// Videos and pictures of the service, fetched once and kept in the library's cache.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <functional>
#include <QQuickAsyncImageProvider>

namespace KeloViewer {

/// Hears the path of the file, or nothing where it could not be fetched. On the main thread.
using HearFile = std::function<void(const QString& path)>;

/// A file of the service, through the queue of its kind ("videos", "thumbnails", ...).
void fetchFile(const std::string& url, KeloAPI::QueuePriority priority, HearFile hear);

/// How many videos wait, the one on its way included.
std::size_t videosInQueue();
/// Gives up the videos that wait. Nobody hears of them.
void forgetQueuedVideos();
/// Deletes all but the newest files, when nothing is shown.
void trimFiles();

/// Pictures as "image://kelo/" and their URL, read off the main thread.
class PictureProvider : public QQuickAsyncImageProvider {
public:
    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& size) override;
};

} // namespace KeloViewer
