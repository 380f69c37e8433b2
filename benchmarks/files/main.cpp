// Video files: a large one against the curl program, many small ones through a queue against a bare
// loop over libcurl, a large cache directory against ls, and a long queue.
#include "benchmarks/support/MediaServer.hpp"
#include "benchmarks/support/Process.hpp"
#include "benchmarks/support/RatioReporter.hpp"
#include "benchmarks/support/ScratchFolder.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <curl/curl.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>

namespace KeloBenchmark {

namespace {

using namespace KeloAPI;

constexpr std::size_t largeBytes = std::size_t{1} << 30U;
constexpr std::size_t smallBytes = 100'000;
constexpr int smallFiles = 1'000;
constexpr int cachedFiles = 100'000;
constexpr int requests = 10'000;

class FilledServer : public MediaServer {
public:
    FilledServer() {
        add("large.mp4", largeBytes);
        for (int i = 0; i < smallFiles; ++i) {
            add(std::to_string(i) + ".mp4", smallBytes);
        }
    }
};

const MediaServer& server() {
    static const FilledServer instance; // ends with the program
    return instance;
}

std::vector<std::string> smallNames() {
    std::vector<std::string> names;
    for (int i = 0; i < smallFiles; ++i) {
        names.push_back(std::to_string(i) + ".mp4");
    }
    return names;
}

/// The registry's session over the network, or over another transport.
void useManager(std::shared_ptr<Manager> manager) {
    Api::session(SessionType::Authenticated)->setSessionManager(std::move(manager));
}

std::shared_ptr<FileManager> cacheIn(const ScratchFolder& folder) {
    auto manager = FileManager::sharedGroupManager("/bench/");
    manager->setDocumentsDirectory(folder.path(""));
    return manager;
}

void largeFile(benchmark::State& state) {
    const ScratchFolder folder;
    useManager(std::make_shared<Manager>(server().trust()));
    const auto cache = cacheIn(folder);
    const double before = processorSeconds();
    for (auto _ : state) {
        const auto endpoint = FileEndpoint::create(server().url("large.mp4"), cache);
        std::optional<FileDownloadResult> result;
        endpoint->download(*endpoint->documentsFile(),
                           [&](const FileDownloadResult& answer) { result = answer; });
        MainQueue::main().runUntil([&] { return result.has_value(); }, std::chrono::minutes(2));
        if (!result || result->error()) {
            state.SkipWithError("the download failed");
            break;
        }
        state.PauseTiming();
        folder.empty();
        state.ResumeTiming();
    }
    reportProcessor(state, processorSeconds() - before);
    state.SetBytesProcessed(static_cast<std::int64_t>(largeBytes) * state.iterations());
}

void largeFileByCurl(benchmark::State& state) {
    const ScratchFolder folder;
    double processor = 0;
    for (auto _ : state) {
        const Spent spent =
            run("exec curl --silent --fail --cacert " + server().certificatePath() + " --output " +
                folder.path("large.mp4") + " " + server().url("large.mp4"));
        if (!spent.succeeded) {
            state.SkipWithError("curl failed");
            break;
        }
        processor += spent.processorSeconds;
        state.PauseTiming();
        folder.empty();
        state.ResumeTiming();
    }
    reportProcessor(state, processor);
    state.SetBytesProcessed(static_cast<std::int64_t>(largeBytes) * state.iterations());
}

void smallFilesByQueue(benchmark::State& state) {
    const ScratchFolder folder;
    const auto cache = cacheIn(folder);
    const auto names = smallNames();
    for (auto _ : state) {
        // A fresh connection for each row, as the loop has.
        useManager(std::make_shared<Manager>(server().trust()));
        const auto queue = FileQueue::withKey("bench");
        int answered = 0;
        int failed = 0;
        for (const std::string& name : names) {
            const auto endpoint = FileEndpoint::create(server().url(name), cache);
            queue->download(endpoint, *endpoint->documentsFile(),
                            [&](const FileDownloadResult& result) {
                                ++answered;
                                failed += result.error() ? 1 : 0;
                            });
        }
        MainQueue::main().runUntil([&] { return answered == smallFiles; }, std::chrono::minutes(2));
        state.PauseTiming();
        if (answered != smallFiles || failed != 0) {
            state.SkipWithError("a download failed");
        }
        queue->kill();
        folder.empty();
        state.ResumeTiming();
        if (failed != 0) {
            break;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(smallBytes) * smallFiles *
                            state.iterations());
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

/// Downloads files one after another over one libcurl handle, each straight into its place. False
/// when one fails.
bool downloadInALoop(const std::vector<std::string>& names, const ScratchFolder& folder) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                     curl_easy_cleanup);
    const std::string certificate = server().certificatePath();
    curl_easy_setopt(handle.get(), CURLOPT_CAINFO, certificate.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_FAILONERROR, 1L);
    for (const std::string& name : names) {
        if (!downloadTo(handle.get(), server().url(name), folder.path(name))) {
            return false;
        }
    }
    return true;
}

void smallFilesByLoop(benchmark::State& state) {
    const ScratchFolder folder;
    const auto names = smallNames();
    for (auto _ : state) {
        if (!downloadInALoop(names, folder)) {
            state.SkipWithError("a download failed");
            break;
        }
        state.PauseTiming();
        folder.empty();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(smallBytes) * smallFiles *
                            state.iterations());
}

void fill(const ScratchFolder& folder) {
    for (int i = 0; i < cachedFiles; ++i) {
        std::ofstream(folder.path("video-" + std::to_string(i) + ".mp4"));
    }
}

class LargeCache : public ScratchFolder {
public:
    LargeCache() { fill(*this); }
};

/// A folder of many files, of which nothing is to be trimmed.
const ScratchFolder& largeCache() {
    static const LargeCache instance; // goes with the program
    return instance;
}

void listCache(benchmark::State& state) {
    const auto cache = cacheIn(largeCache());
    for (auto _ : state) {
        cache->cleanDirectory(cachedFiles);
    }
}

void listCacheByLs(benchmark::State& state) {
    const std::string folder = largeCache().path("");
    for (auto _ : state) {
        if (!run("exec ls -t " + folder).succeeded) {
            state.SkipWithError("ls failed");
            break;
        }
    }
}

void trimCache(benchmark::State& state) {
    const ScratchFolder folder;
    const auto cache = cacheIn(folder);
    for (auto _ : state) {
        state.PauseTiming();
        fill(folder);
        state.ResumeTiming();
        cache->cleanDirectory(99);
    }
}

/// What a shell would trim with.
void trimCacheByShell(benchmark::State& state) {
    const ScratchFolder folder;
    const std::string trim = "cd " + folder.path("") + " && ls -t | tail -n +101 | xargs rm --";
    for (auto _ : state) {
        state.PauseTiming();
        fill(folder);
        state.ResumeTiming();
        if (!run(trim).succeeded) {
            state.SkipWithError("the shell failed");
            break;
        }
    }
}

void enterRequests(benchmark::State& state) {
    const ScratchFolder folder;
    const auto cache = cacheIn(folder);
    std::vector<std::shared_ptr<FileEndpoint>> files;
    for (int i = 0; i < requests; ++i) {
        files.push_back(FileEndpoint::create(
            "https://media.example/videos/" + std::to_string(i) + ".mp4", cache));
    }
    for (auto _ : state) {
        state.PauseTiming();
        useManager(std::make_shared<Manager>(std::make_shared<fakes::ScriptedTransport>()));
        const auto queue = FileQueue::withKey("bench");
        std::promise<void> entered;
        state.ResumeTiming();
        for (int i = 0; i < requests; ++i) {
            const auto& file = files[static_cast<std::size_t>(i)];
            queue->download(file, *file->documentsFile(), *queuePriorityOf(i % 3),
                            [](const FileDownloadResult&) {});
        }
        const_cast<SerialQueue&>(queue->downloadQueue()).async([&] { entered.set_value(); });
        entered.get_future().wait();
        state.PauseTiming();
        if (queue->queuedFiles().size() != static_cast<std::size_t>(requests)) {
            state.SkipWithError("the requests did not enter");
        }
        queue->kill();
        state.ResumeTiming();
    }
}

BENCHMARK(largeFile)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(largeFileByCurl)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(smallFilesByQueue)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(smallFilesByLoop)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(listCache)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(listCacheByLs)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(trimCache)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(trimCacheByShell)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(enterRequests)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

} // namespace

} // namespace KeloBenchmark

int main(int argc, char** argv) {
    using KeloBenchmark::Clock;
    return KeloBenchmark::runWithRatios(
        argc, argv,
        {{"file-1GiB/curl", "largeFile/real_time", "largeFileByCurl/real_time", 0.95, Clock::Wall},
         {"files-1000/loop", "smallFilesByQueue/real_time", "smallFilesByLoop/real_time", 0.80,
          Clock::Wall},
         {"list-100000/ls", "listCache/real_time", "listCacheByLs/real_time", 1.0, Clock::Wall},
         {"trim-100000/shell",
          "trimCache/real_time",
          "trimCacheByShell/real_time",
          {},
          Clock::Wall},
         {"enter-10000", "enterRequests/process_time", "0.1 s", 1.0}});
}
