#include "service/store/UploadFolder.hpp"

#include "service/store/Password.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace KeloService {
namespace {

std::string makeTemporary() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kelo-service-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make the folder " + pattern + " for uploads");
    }
    return pattern;
}

std::string makeBeside(const std::string& database) {
    std::string path = database + ".uploads";
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) {
        throw std::runtime_error("cannot make the folder " + path + ": " + error.message());
    }
    return path;
}

} // namespace

UploadFolder::UploadFolder(const std::string& database)
    : path_(database == ":memory:" ? makeTemporary() : makeBeside(database))
    , isTemporary_(database == ":memory:") {}

UploadFolder::~UploadFolder() {
    if (isTemporary_) {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
}

void UploadFolder::remove(const std::string& name) const {
    ::unlink(path(name).c_str());
}

FileWriter::FileWriter(const UploadFolder& folder)
    : folder_(folder)
    , file_{randomText(16), 0}
    , descriptor_(
          ::open(folder.path(file_.name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {}

FileWriter::~FileWriter() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    if (!isKept_) {
        folder_.remove(file_.name);
    }
}

bool FileWriter::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written <= 0) {
            return false;
        }
        file_.bytes += written;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

JoinedFiles::JoinedFiles(const UploadFolder& folder, std::vector<StoredFile> files)
    : folder_(&folder)
    , files_(std::move(files)) {
    for (const StoredFile& file : files_) {
        bytes_ += file.bytes;
    }
}

std::string JoinedFiles::read(std::int64_t offset, std::size_t count) const {
    for (const StoredFile& file : files_) {
        if (offset >= file.bytes) {
            offset -= file.bytes;
            continue;
        }
        const int descriptor = ::open(folder_->path(file.name).c_str(), O_RDONLY | O_CLOEXEC);
        std::string bytes(std::min(count, static_cast<std::size_t>(file.bytes - offset)), '\0');
        const ssize_t got = ::pread(descriptor, bytes.data(), bytes.size(), offset);
        ::close(descriptor);
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        return bytes;
    }
    return {};
}

} // namespace KeloService
