#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace KeloAPI {

FileEndpoint::FileEndpoint(Key key, std::string path, std::shared_ptr<FileManager> fileManager)
    : Endpoint(key, Api::session(SessionType::Authenticated))
    , _fileManager(std::move(fileManager)) {
    require(_fileManager != nullptr, "a file endpoint needs a file manager");
    Endpoint::setPath(std::move(path));
}

std::shared_ptr<FileEndpoint> FileEndpoint::create(std::string path,
                                                   std::shared_ptr<FileManager> fileManager) {
    return make<FileEndpoint>(std::move(path), std::move(fileManager));
}

std::optional<URL> FileEndpoint::documentsFile() {
    const auto directory = _fileManager->documentsDirectory();
    if (!directory) {
        return std::nullopt;
    }
    const std::string& whole = path();
    const std::string last = whole.substr(whole.rfind('/') + 1);
    const std::string name = last.substr(0, last.find('?'));
    // The path may come from the service: it must not lead out of the directory.
    if (name == "." || name == "..") {
        return std::nullopt;
    }
    return URL::fileURL(*directory + name);
}

std::optional<URL> FileEndpoint::localUrl() {
    const auto file = documentsFile();
    const auto filePath = file ? file->filePath() : std::nullopt;
    const std::lock_guard lock(_mutex);
    if (filePath && !_downloadedUrl && access(filePath->c_str(), F_OK) == 0) {
        _downloadedUrl = file;
    }
    return _downloadedUrl;
}

void FileEndpoint::download(const URL& destination, Completion completion,
                            DownloadDelivery delivery) {
    require(completion != nullptr, "a download needs a completion");
    auto self = std::static_pointer_cast<FileEndpoint>(shared_from_this());
    if (localUrl()) {
        completion(FileDownloadSuccess{std::move(self)});
        return;
    }
    Endpoint::download(
        destination,
        [self = std::move(self), completion = std::move(completion)](const URL& url,
                                                                     std::optional<Error> error) {
            if (error) {
                completion(FileDownloadResult::Error{*std::move(error)});
                return;
            }
            self->setDownloadedUrl(url);
            completion(FileDownloadSuccess{self});
        },
        delivery);
}

void FileEndpoint::deleteFile() {
    const auto url = localUrl();
    const auto filePath = url ? url->filePath() : std::nullopt;
    if (!filePath) {
        return;
    }
    if (std::filesystem::remove_all(*filePath) == 0) {
        throw std::filesystem::filesystem_error(
            "cannot remove", *filePath, std::make_error_code(std::errc::no_such_file_or_directory));
    }
}

void FileEndpoint::setDownloadedUrl(const URL& url) {
    const std::lock_guard lock(_mutex);
    _downloadedUrl = url;
}

} // namespace KeloAPI
