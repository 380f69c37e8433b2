// A timeline's response, from its bytes to finished models, as a ladder: the JSON reader alone, the
// library's document, the envelope with the lightest items, the models; and a client over another
// reader beside it. Every side gets the same bytes.
#include "benchmarks/support/RatioReporter.hpp"
#include "benchmarks/support/TimelineResponse.hpp"
#include "benchmarks/timeline/NlohmannClient.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <simdjson.h>

#include <cstdlib>

namespace KeloBenchmark {

namespace {

using namespace KeloAPI;

/// An answer as the HTTP layer hands it to a serializer.
class Answer {
public:
    explicit Answer(const benchmark::State& state)
        : _body(timelineResponse(static_cast<std::size_t>(state.range(0)))) {}

    const std::string& body() const { return _body; }
    ResponseContent content() const { return {_request, _response, _body, _error}; }

private:
    std::string _body;
    URLRequest _request;
    std::optional<HTTPResponse> _response;
    std::optional<Error> _error;
};

void countBytes(benchmark::State& state, const Answer& answer) {
    state.SetBytesProcessed(static_cast<std::int64_t>(answer.body().size()) * state.iterations());
    state.counters["records"] = static_cast<double>(state.range(0));
}

void simdjsonParse(benchmark::State& state) {
    const Answer answer(state);
    simdjson::dom::parser parser;
    for (auto _ : state) {
        auto root = parser.parse(answer.body().data(), answer.body().size(), false);
        if (root.error() != simdjson::SUCCESS) {
            state.SkipWithError("the response does not parse");
            break;
        }
        benchmark::DoNotOptimize(root);
    }
    countBytes(state, answer);
}

void document(benchmark::State& state) {
    const Answer answer(state);
    for (auto _ : state) {
        auto parsed = JsonDocument::parse(answer.body());
        benchmark::DoNotOptimize(parsed);
    }
    countBytes(state, answer);
}

template <class T>
void envelope(benchmark::State& state, const std::shared_ptr<const JsonParser<T>>& parser) {
    const Answer answer(state);
    for (auto _ : state) {
        auto response = keloModelResponseSerializer(answer.content(), *parser);
        if (response.error || response.items.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("the response is not read");
            break;
        }
        benchmark::DoNotOptimize(response.items);
    }
    countBytes(state, answer);
}

void envelopeAlone(benchmark::State& state) {
    envelope<KLEmpty>(state, std::make_shared<KLEmptyParser>());
}

void models(benchmark::State& state) {
    envelope<KLWatchPost>(state, std::make_shared<PostParser>());
}

void nlohmannClient(benchmark::State& state) {
    const Answer answer(state);
    for (auto _ : state) {
        auto page = readWithNlohmann(answer.body());
        benchmark::DoNotOptimize(page);
    }
    countBytes(state, answer);
}

bool same(const KLWatchPost& a, const KLWatchPost& b) {
    const bool sameRekelo =
        a.rekeloed() == b.rekeloed() &&
        (!a.rekeloed() || a.currentUserRekelo->rekeloId == b.currentUserRekelo->rekeloId);
    return a.postId == b.postId && a.caption == b.caption && a.created == b.created &&
           a.videoUrl == b.videoUrl && a.videoUrl.has_value() && a.thumbnailUrl == b.thumbnailUrl &&
           a.liked == b.liked && sameRekelo && a.user->username == b.user->username &&
           a.user->loopData->count == b.user->loopData->count &&
           a.user->loopData->velocity == b.user->loopData->velocity;
}

/// A comparison is worth something only when both clients end with the same models.
bool clientsAgree() {
    const std::string body = timelineResponse(100);
    const URLRequest request;
    const std::optional<HTTPResponse> response;
    const std::optional<Error> error;
    const auto read = keloModelResponseSerializer({request, response, body, error}, PostParser());
    const auto& ours = read.items;
    const Page theirs = readWithNlohmann(body);
    if (ours.size() != 100 || theirs.posts.size() != ours.size() ||
        read.metadata->anchor() != theirs.anchor || read.metadata->nextPage() != theirs.nextPage) {
        return false;
    }
    for (std::size_t i = 0; i < ours.size(); ++i) {
        if (!same(*ours[i], *theirs.posts[i])) {
            return false;
        }
    }
    return true;
}

BENCHMARK(simdjsonParse)->Arg(20)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(document)->Arg(20)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(envelopeAlone)->Arg(20)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(models)->Arg(20)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(nlohmannClient)->Arg(20)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace KeloBenchmark

int main(int argc, char** argv) {
    if (!KeloBenchmark::clientsAgree()) {
        std::fputs("bench-timeline: the clients read different models\n", stderr);
        return EXIT_FAILURE;
    }
    return KeloBenchmark::runWithRatios(
        argc, argv,
        {{"timeline-20/simdjson", "models/20", "simdjsonParse/20", 0.40},
         {"timeline-20/nlohmann", "models/20", "nlohmannClient/20", 8.0},
         {"timeline-1000/simdjson", "models/1000", "simdjsonParse/1000", 0.40},
         {"timeline-1000/nlohmann", "models/1000", "nlohmannClient/1000", 8.0},
         {"timeline-20/document", "document/20", "simdjsonParse/20"},
         {"timeline-20/envelope", "envelopeAlone/20", "simdjsonParse/20"},
         {"timeline-1000/document", "document/1000", "simdjsonParse/1000"},
         {"timeline-1000/envelope", "envelopeAlone/1000", "simdjsonParse/1000"}});
}
