// A timeline's response, from its bytes to finished models, as a ladder: the JSON reader alone, the
// library's document, the envelope with the lightest items, the models; and a client over another
// reader beside it. Every side gets the same bytes.
#include "benchmarks/support/RatioReporter.hpp"
#include "benchmarks/support/TimelineResponse.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <nlohmann/json.hpp>
#include <simdjson.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

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

/// A page of a timeline as a client written in an afternoon reads it: nlohmann-json's value tree,
/// and the same models filled from it.
struct Page {
    std::vector<std::shared_ptr<KLWatchPost>> posts;
    std::int64_t count = 0;
    std::optional<std::int64_t> nextPage;
    std::optional<std::int64_t> previousPage;
    std::int64_t size = 0;
    std::optional<std::string> anchor;
    std::optional<std::string> backAnchor;
    std::optional<std::string> title;
    std::int64_t nextAfter = 0;
    std::int64_t displayCount = 0;
};

using Json = nlohmann::json;

std::optional<std::string> text(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
        return std::nullopt;
    }
    return found->get<std::string>();
}

std::optional<std::int64_t> integer(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number()) {
        return std::nullopt;
    }
    return found->get<std::int64_t>();
}

std::shared_ptr<KLWatchUser> user(const Json& record) {
    const auto nested = record.find("user");
    const Json& json = nested != record.end() && nested->is_object() ? *nested : record;
    auto user = std::make_shared<KLWatchUser>();
    user->username = json.contains("username") ? text(json, "username") : "";
    const auto count = json.find("loopCount");
    const auto velocity = json.find("loopVelocity");
    if (count != json.end() && count->is_number() && velocity != json.end() &&
        velocity->is_number()) {
        user->loopData = std::make_shared<LoopData>(Number::of(count->get<std::int64_t>()),
                                                    Number::of(velocity->get<double>()));
    }
    return user;
}

std::shared_ptr<KLWatchPost> post(const Json& record) {
    auto post = std::make_shared<KLWatchPost>();
    const Json& postId = record.at("postId");
    post->postId = postId.is_string() ? postId.get<std::string>() : postId.dump();
    post->caption = record.contains("description") ? text(record, "description") : "";
    if (const auto created = text(record, "created")) {
        post->created = DateFormatter().date(*created);
    }
    post->thumbnailUrl = record.contains("thumbnailUrl") ? text(record, "thumbnailUrl") : "";
    if (const auto liked = record.find("liked"); liked != record.end() && liked->is_boolean()) {
        post->liked = liked->get<bool>();
    }
    if (const auto repostId = integer(record, "myRepostId")) {
        post->currentUserRekelo = std::make_shared<KLRekelo>();
        post->currentUserRekelo->rekeloId = std::to_string(*repostId);
    }
    if (const auto list = record.find("videoUrls"); list != record.end() && list->is_array()) {
        for (const Json& rendition : *list) {
            if (integer(rendition, "rate") == 0) {
                post->videoUrl = text(rendition, "videoUrl");
                break;
            }
        }
    }
    post->user = user(record);
    return post;
}

Page readWithNlohmann(const std::string& body) {
    const Json root = Json::parse(body);
    if (const auto error = text(root, "error"); error && !error->empty()) {
        throw std::runtime_error(*error);
    }
    const Json& data = root.at("data");
    Page page;
    page.count = integer(data, "count").value_or(0);
    page.nextPage = integer(data, "nextPage");
    page.previousPage = integer(data, "previousPage");
    page.size = integer(data, "size").value_or(0);
    page.nextAfter = integer(data, "nextAfter").value_or(0);
    page.title = text(data, "title");
    page.anchor = text(data, "anchor");
    if (const auto anchor = integer(data, "anchor")) {
        page.anchor = std::to_string(*anchor);
    }
    page.backAnchor = text(data, "backAnchor");
    page.displayCount = integer(data, "displayCount").value_or(0);
    const Json& records = data.at("records");
    page.posts.reserve(records.size());
    for (const Json& record : records) {
        page.posts.push_back(post(record));
    }
    return page;
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
