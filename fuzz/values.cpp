// Any lines as dates, as the names and values of a query, and as the path of a file of the service.
#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPI/http/ParameterEncoding.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace KeloAPI;

const std::string cacheFolder = "/cache/";

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.emplace_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

/// Nothing follows what was read, and it is a whole number of milliseconds.
void readAsDate(const std::string& text) {
    if (const auto date = DateFormatter().date(text)) {
        expect(date->time_since_epoch().count() % 1000 == 0);
        expect(!DateFormatter().date(text + "Z"));
        expect(DateFormatter().date(text + "0") == date);
    }
}

/// Names and values in turn, the last one as a list and as a map, too.
void writeAsQuery(const std::vector<std::string>& lines) {
    Parameters parameters;
    std::size_t pairs = 0;
    for (std::size_t at = 0; at + 1 < lines.size(); at += 2) {
        pairs += parameters.insert_or_assign(lines[at], lines[at + 1]).second ? 1 : 0;
    }
    if (lines.size() % 2 == 0) {
        parameters.insert_or_assign(lines.front(), ParameterList{lines.back(), true, nullptr});
        parameters.insert_or_assign("map", Parameters{{lines.back(), lines.front()}});
        pairs = 0; // how many there are depends on names that come twice
    }
    const std::string query = queryString(parameters);
    const auto stands = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
               std::string_view("-._~%=&").find(c) != std::string_view::npos;
    };
    expect(std::all_of(query.begin(), query.end(), stands));
    const auto count = [&query](char c) {
        return static_cast<std::size_t>(std::count(query.begin(), query.end(), c));
    };
    if (pairs > 0) {
        expect(count('=') == pairs && count('&') == pairs - 1);
    }
    expect(URL::parse("https://service.example/?" + query).has_value());
}

/// One component of a path in the cache, or nothing.
void placeInCache(const std::string& path) {
    static const auto manager = [] {
        auto made = FileManager::sharedGroupManager("fuzz");
        made->setDocumentsDirectory(cacheFolder);
        return made;
    }();
    const auto place = FileEndpoint::create(path, manager)->documentsFile();
    const auto file = place ? place->filePath() : std::nullopt;
    if (file) {
        expect(file->starts_with(cacheFolder));
        const std::string name = file->substr(cacheFolder.size());
        expect(name.find('/') == std::string::npos && name != "." && name != "..");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto lines = linesOf({reinterpret_cast<const char*>(data), size});
    for (const auto& line : lines) {
        readAsDate(line);
        placeInCache(line);
    }
    writeAsQuery(lines);
    return 0;
}
