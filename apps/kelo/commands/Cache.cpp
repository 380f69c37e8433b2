#include "commands/Commands.hpp"
#include "TextForms.hpp"
#include "TextWidth.hpp"
#include "VideoCache.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

std::string countText(std::size_t files) {
    return std::to_string(files) + (files == 1 ? " file" : " files");
}

Lines linesOfFiles(const std::vector<std::shared_ptr<CachedFile>>& files) {
    Lines lines;
    std::uint64_t bytes = 0;
    for (const auto& file : files) {
        bytes += file->bytes;
        lines.push_back(rightAligned(ageText(KeloAPI::Date::now() - file->modified), 8) + "  " +
                        rightAligned(sizeText(file->bytes), 8) + "  " + file->name);
    }
    lines.push_back(files.empty() ? "The cache is empty."
                                  : countText(files.size()) + ", " + sizeText(bytes));
    return lines;
}

} // namespace

void listCache(const HostPointer& host, const Arguments& /*arguments*/) {
    host->output().writeAll(VideoCache::files(), linesOfFiles);
    host->end();
}

void trimCache(const HostPointer& host, const Arguments& arguments) {
    const std::size_t before = VideoCache::files().size();
    VideoCache::trim(arguments.number("N"));
    const std::size_t left = VideoCache::files().size();
    const std::size_t removed = before - std::min(before, left);
    host->show({{"removed", removed}, {"left", left}},
               {"removed " + countText(removed) + ", " + countText(left) + " left"});
}

void showCachePath(const HostPointer& host, const Arguments& /*arguments*/) {
    const std::string path = VideoCache::directory();
    host->output().writePath({{"directory", path}}, path);
    host->end();
}

} // namespace KeloHost
