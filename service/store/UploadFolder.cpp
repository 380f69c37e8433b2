#include "service/store/UploadFolder.hpp"

#include "service/Encoding.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace KeloService {

UploadFolder::UploadFolder(const std::string& database)
    : path_(database + ".uploads")
    , isTemporary_(database == ":memory:") {
    std::error_code error;
    if (isTemporary_) {
        path_ = (std::filesystem::temp_directory_path() / "kelo-service-XXXXXX").string();
        if (mkdtemp(path_.data()) == nullptr) {
            error = std::error_code(errno, std::generic_category());
        }
    } else {
        std::filesystem::create_directories(path_, error);
    }
    if (error) {
        throw std::runtime_error("cannot make the folder " + path_ + ": " + error.message());
    }
}

UploadFolder::~UploadFolder() {
    if (isTemporary_) {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
}

void UploadFolder::remove(const std::string& name) const {
    ::unlink(path(name).c_str());
}

std::string UploadFolder::read(const std::vector<StoredFile>& files, std::int64_t offset,
                               std::size_t count) const {
    for (const StoredFile& file : files) {
        if (offset < file.bytes) {
            std::string bytes(std::min(count, static_cast<std::size_t>(file.bytes - offset)), '\0');
            std::ifstream stream(path(file.name), std::ios::binary);
            stream.seekg(offset);
            stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            bytes.resize(static_cast<std::size_t>(stream.gcount()));
            return bytes;
        }
        offset -= file.bytes;
    }
    return {};
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

} // namespace KeloService
