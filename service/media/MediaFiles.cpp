#include "service/media/MediaFiles.hpp"

#include <cstdint>
#include <cstring>
#include <map>

extern "C" {
extern const char keloMediaFiles[];
extern const char keloMediaFilesEnd[];
}

namespace KeloService {
namespace {

using Folders = std::map<std::string, std::vector<MediaFile>>;

Folders readMediaFiles() {
    Folders folders;
    for (const char* place = keloMediaFiles; place != keloMediaFilesEnd;) {
        const std::string_view path(place);
        place += path.size() + 1;
        std::uint32_t size = 0;
        std::memcpy(&size, place, sizeof size);
        place += sizeof size;
        const std::size_t slash = path.rfind('/');
        folders[std::string(path.substr(0, slash))].push_back(
            {path.substr(slash + 1), std::string_view(place, size)});
        place += size;
    }
    return folders;
}

} // namespace

const std::vector<MediaFile>& mediaFiles(const std::string& folder) {
    static const Folders folders = readMediaFiles();
    return folders.at(folder);
}

} // namespace KeloService
