#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/files/FileManager.hpp>

namespace KeloAPI {

class FileEndpoint;

/// The endpoint whose file is there now; its `localUrl` says where.
struct FileDownloadSuccess {
    std::shared_ptr<FileEndpoint> endpoint; ///< Never null.
};

using FileDownloadResult = Outcome<FileDownloadSuccess>; ///< How a download of a file ended.

/// One file of the service, a video as a rule, and its place in a cache directory. Its path is
/// where the file is fetched: the complete URL as a rule, whose host gets the session key
/// (`Endpoint::path`). Two endpoints with the same path are the same file.
class KELO_API FileEndpoint : public Endpoint {
public:
    /// Neither empty nor throwing.
    using Completion = std::function<void(const FileDownloadResult& result)>;

    /// On the authenticated session, with `Api::sessionDelegate()`. The manager must not be null.
    static std::shared_ptr<FileEndpoint> create(std::string path,
                                                std::shared_ptr<FileManager> fileManager);

    using Endpoint::download;
    /// Makes the file available at the file URL `destination`. A file that is there already stays
    /// where it is, and the completion runs at once on this thread; otherwise it is fetched, and
    /// the completion runs where `delivery` says. A `FileQueue` asks for `AtOnce`, so that the next
    /// file does not wait for the main thread; an override hands the value on, or the queue waits.
    virtual void download(const URL& destination, Completion completion,
                          DownloadDelivery delivery = DownloadDelivery::MainQueue);

    /// Where the file is: as soon as it has been downloaded or found in the cache, that place, even
    /// if the file has gone since. Absent before.
    virtual std::optional<URL> localUrl();

    /// Removes the file that `localUrl` names, and a directory with all that is in it; where there
    /// is none, it does nothing. Throws `std::filesystem::filesystem_error` when the system
    /// refuses. `localUrl` stays what it was.
    virtual void deleteFile();

    /// The file's place in the cache: the last component of the path, without what follows a "?",
    /// put behind the manager's directory. Paths that end in the same name share one place. An
    /// empty name gives the directory itself. Absent without a directory, and for the names "." and
    /// "..", which are not files.
    virtual std::optional<URL> documentsFile();

    /// For those who wait for this file; the library itself neither reads nor changes it.
    std::vector<std::shared_ptr<Object>> subscribers;

    /// The cache it belongs to. Never null.
    const std::shared_ptr<FileManager>& fileManager() const { return _fileManager; }

protected:
    /// For derived classes, through `make`.
    FileEndpoint(Key key, std::string path, std::shared_ptr<FileManager> fileManager);

private:
    void setDownloadedUrl(const URL& url);

    // A queue reads it on its own thread while the host asks on another.
    std::mutex _mutex;
    std::optional<URL> _downloadedUrl;
    const std::shared_ptr<FileManager> _fileManager;
};

} // namespace KeloAPI
