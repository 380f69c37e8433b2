// A long video in segments, one after another over one connection, against the curl program that
// sends the same segments.
#include "benchmarks/support/MediaServer.hpp"
#include "benchmarks/support/Process.hpp"
#include "benchmarks/support/RatioReporter.hpp"
#include "benchmarks/support/ScratchFolder.hpp"
#include "tests/support/RecordingDelegate.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <memory>
#include <random>

namespace KeloBenchmark {

namespace {

using namespace KeloAPI;

constexpr int segments = 128;
constexpr std::size_t segmentBytes = std::size_t{8} << 20U;
constexpr std::int64_t videoBytes = segments * static_cast<std::int64_t>(segmentBytes);

const MediaServer& server() {
    static const MediaServer instance; // ends with the program
    return instance;
}

/// The video, cut into files: both sides read what they send.
class CutVideo : public ScratchFolder {
public:
    CutVideo() {
        std::independent_bits_engine<std::mt19937_64, 64, std::uint64_t> random(1);
        std::vector<std::uint64_t> words(segmentBytes / sizeof(std::uint64_t));
        for (std::uint64_t& word : words) {
            word = random();
        }
        for (int i = 0; i < segments; ++i) {
            words.front() = static_cast<std::uint64_t>(i);
            std::ofstream(segment(i), std::ios::binary)
                .write(reinterpret_cast<const char*>(words.data()), segmentBytes);
        }
    }

    std::string segment(int index) const { return path(std::to_string(index)); }
};

const CutVideo& video() {
    static const CutVideo instance; // goes with the program
    return instance;
}

/// Reads ahead: while one segment is under way, the next is read into the other buffer.
class SegmentReader {
public:
    Data read(int segment) {
        auto& buffer = _buffers[static_cast<std::size_t>(segment) % _buffers.size()];
        std::ifstream file(video().segment(segment), std::ios::binary);
        file.rdbuf()->pubsetbuf(nullptr, 0); // straight into the segment's buffer
        file.read(reinterpret_cast<char*>(buffer.get()), segmentBytes);
        return {buffer, {buffer.get(), segmentBytes}};
    }

private:
    static std::shared_ptr<std::byte[]> uninitialized() {
        return std::shared_ptr<std::byte[]>(new std::byte[segmentBytes]);
    }

    std::array<std::shared_ptr<std::byte[]>, 2> _buffers = {uninitialized(), uninitialized()};
};

bool uploadSegments() {
    const auto endpoint = LongformUploadEndpoint::create();
    SegmentReader reader;
    Data next = reader.read(0);
    bool failed = false;
    for (int i = 0; i < segments && !failed; ++i) {
        bool answered = false;
        endpoint->uploadSegment("video", next, i, [&](std::optional<Error> error) {
            answered = true;
            failed = error.has_value();
        });
        if (i + 1 < segments) {
            next = reader.read(i + 1);
        }
        failed = !MainQueue::main().runUntil([&] { return answered; }, std::chrono::minutes(1)) ||
                 failed;
    }
    return !failed;
}

void upload(benchmark::State& state) {
    const auto delegate = std::make_shared<testing::RecordingDelegate>();
    delegate->host = server().authority();
    delegate->sessionKey = "key";
    Api::setSessionDelegate(delegate);
    Diagnostics::setSink([](std::string_view) {});
    const auto session = Api::session(SessionType::Authenticated);
    session->setSessionManager(std::make_shared<Manager>(server().trust()));
    static_cast<void>(video());
    PeakMemory peak;
    const double before = processorSeconds();
    for (auto _ : state) {
        if (!uploadSegments()) {
            state.SkipWithError("a segment failed");
            break;
        }
    }
    reportProcessor(state, processorSeconds() - before);
    state.counters["peak_MiB"] = static_cast<double>(peak.kilobytes()) / 1024;
    state.SetBytesProcessed(videoBytes * state.iterations());
    session->setSessionManager(std::make_shared<Manager>(server().trust()));
}

std::string curlCommand() {
    std::string command = "exec curl --silent --fail --cacert " + server().certificatePath();
    for (int i = 0; i < segments; ++i) {
        command += " --upload-file " + video().segment(i) + " '" +
                   server().uploadUrl("video?segmentIndex=" + std::to_string(i)) + "'";
    }
    return command;
}

void uploadByCurl(benchmark::State& state) {
    const auto command = curlCommand();
    double processor = 0;
    for (auto _ : state) {
        const Spent spent = run(command);
        if (!spent.succeeded) {
            state.SkipWithError("curl failed");
            break;
        }
        processor += spent.processorSeconds;
    }
    // No peak of its memory: the system counts a spawned program's from what spawned it.
    reportProcessor(state, processor);
    state.SetBytesProcessed(videoBytes * state.iterations());
}

BENCHMARK(upload)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(uploadByCurl)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

} // namespace KeloBenchmark

int main(int argc, char** argv) {
    using KeloBenchmark::Clock;
    return KeloBenchmark::runWithRatios(
        argc, argv,
        {{"upload-1GiB/curl", "upload/real_time", "uploadByCurl/real_time", 0.95, Clock::Wall}});
}
