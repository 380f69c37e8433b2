#include "benchmarks/files/CurlClients.hpp"

#include <curl/curl.h>

#include <cstdio>
#include <memory>

namespace KeloBenchmark {

namespace {

bool downloadTo(CURL* handle, const std::string& url, const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, file);
    const bool received = curl_easy_perform(handle) == CURLE_OK;
    return std::fclose(file) == 0 && received;
}

} // namespace

bool downloadInALoop(const MediaServer& server, const std::vector<std::string>& names,
                     const ScratchFolder& folder) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                     curl_easy_cleanup);
    const std::string certificate = server.certificatePath();
    curl_easy_setopt(handle.get(), CURLOPT_CAINFO, certificate.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_FAILONERROR, 1L);
    for (const std::string& name : names) {
        if (!downloadTo(handle.get(), server.url(name), folder.path(name))) {
            return false;
        }
    }
    return true;
}

} // namespace KeloBenchmark
