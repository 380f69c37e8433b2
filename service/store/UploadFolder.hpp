#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {

/// A file of the upload folder, and its length.
struct StoredFile {
    std::string name;
    std::int64_t bytes = 0;
};

/// Where the bytes of uploads lie: beside the database's file, or in a temporary folder that goes
/// with this object where the database has none. The members are safe to use from any thread.
class UploadFolder {
public:
    /// `database` is a file or ":memory:". Throws std::runtime_error.
    explicit UploadFolder(const std::string& database);
    ~UploadFolder();
    UploadFolder(const UploadFolder&) = delete;
    UploadFolder& operator=(const UploadFolder&) = delete;

    std::string path(const std::string& name) const { return path_ + "/" + name; }
    void remove(const std::string& name) const;
    /// At least one and at most `count` bytes from there on of the files, one behind the other;
    /// empty at the end, and when they cannot be read.
    std::string read(const std::vector<StoredFile>& files, std::int64_t offset,
                     std::size_t count) const;

private:
    std::string path_;
    bool isTemporary_;
};

/// A new file of the folder, which goes with this object unless it is kept.
class FileWriter {
public:
    explicit FileWriter(const UploadFolder& folder);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    /// False when the system does not take them all.
    bool write(std::string_view bytes);
    const StoredFile& file() const { return file_; }
    void keep() { isKept_ = true; }

private:
    const UploadFolder& folder_;
    StoredFile file_;
    int descriptor_;
    bool isKept_ = false;
};

} // namespace KeloService
