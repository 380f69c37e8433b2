// A list of posts that grows page by page at either end, against a plain vector of the same objects
// that grows by the same pages.
#include "benchmarks/support/RatioReporter.hpp"

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

namespace KeloBenchmark {

namespace {

using namespace KeloAPI;
using Elements = KLPagedData::Elements;

constexpr int pageSize = 20;

/// A page as the service's are: its posts and the numbers of its neighbours.
KLPagedData page() {
    Elements posts;
    for (int i = 0; i < pageSize; ++i) {
        posts.push_back(std::make_shared<KLWatchPost>());
    }
    return KLPagedData(std::move(posts));
}

/// Grows a new `List` by `grow(list, page)` as often as the benchmark's argument says.
template <class List, class Grow>
void growing(benchmark::State& state, Grow grow) {
    const KLPagedData added = page();
    for (auto _ : state) {
        List list;
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            grow(list, added);
        }
        benchmark::DoNotOptimize(list);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * pageSize);
}

void append(benchmark::State& state) {
    growing<KLPagedData>(
        state, [](KLPagedData& list, const KLPagedData& added) { list.appendPagedData(added); });
}

void appendToVector(benchmark::State& state) {
    growing<Elements>(state, [](Elements& list, const KLPagedData& added) {
        list.insert(list.end(), added.begin(), added.end());
    });
}

void prepend(benchmark::State& state) {
    growing<KLPagedData>(
        state, [](KLPagedData& list, const KLPagedData& added) { list.prependPagedData(added); });
}

void prependToVector(benchmark::State& state) {
    growing<Elements>(state, [](Elements& list, const KLPagedData& added) {
        list.insert(list.begin(), added.begin(), added.end());
    });
}

// 200,000 posts at the end, and 1,000 pages at the start.
BENCHMARK(append)->Name("lists/append")->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(appendToVector)->Name("lists/vectorAppend")->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(prepend)->Name("lists/prepend")->Arg(1'000)->Unit(benchmark::kMillisecond);
BENCHMARK(prependToVector)->Name("lists/vectorPrepend")->Arg(1'000)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace KeloBenchmark

int main(int argc, char** argv) {
    // At most 1.5 times a vector's time.
    constexpr double bound = 1 / 1.5;
    return KeloBenchmark::runWithRatios(
        argc, argv,
        {{"lists-append/vector", "lists/append/10000", "lists/vectorAppend/10000", bound},
         {"lists-prepend/vector", "lists/prepend/1000", "lists/vectorPrepend/1000", bound}});
}
