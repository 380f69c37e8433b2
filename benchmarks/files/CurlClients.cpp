#include "benchmarks/files/CurlClients.hpp"

#include <curl/curl.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

namespace KeloBenchmark {

namespace {

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

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

Spent run(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    Spent spent;
    if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
        int status = 0;
        rusage usage{};
        wait4(process, &status, 0, &usage);
        spent.succeeded = status == 0;
        spent.processorSeconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    }
    posix_spawn_file_actions_destroy(&actions);
    return spent;
}

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
