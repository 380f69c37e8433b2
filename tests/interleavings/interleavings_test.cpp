#include "Models.hpp"
#include "support/GeneratedBlock.hpp"

#include <gtest/gtest.h>

#include <iostream>

namespace KeloAPI::testing {
namespace {

std::string steps(const Explored& found) {
    std::string text = found.broken + ", after the steps of the threads";
    for (const int thread : found.counterexample.value_or(std::vector<int>())) {
        text += ' ' + std::to_string(thread);
    }
    return text;
}

template <class Model>
class InterleavingsTest : public ::testing::Test {};

using Models = ::testing::Types<MainQueueModel, SerialQueueModel, NetworkThreadModel,
                                CompletionModel, ExitModel>;
struct ModelName {
    template <class Model>
    static std::string GetName(int) {
        return Model::name;
    }
};
TYPED_TEST_SUITE(InterleavingsTest, Models, ModelName);

TYPED_TEST(InterleavingsTest, HoldsInEveryOrder) {
    const Explored found = Explorer<TypeParam>::explore({});
    EXPECT_FALSE(found.counterexample) << steps(found);
    EXPECT_GT(found.schedules, 100U);
}

TYPED_TEST(InterleavingsTest, FindsThePlantedFault) {
    const Explored found = Explorer<TypeParam>::explore({.faulty = true});
    ASSERT_TRUE(found.counterexample);
    std::cout << steps(found) << '\n';
}

template <class... Each>
std::string rowsOf(::testing::Types<Each...>) {
    std::string rows;
    const auto add = [&](const std::string& name, const Explored& found) {
        rows += "| " + name + " | " + std::to_string(found.states) + " | " +
                std::to_string(found.schedules) + " |\n";
    };
    (add(Each::name, Explorer<Each>::explore({})), ...);
    return rows;
}

TEST(InterleavingsPage, SaysHowManyOrdersWereTaken) {
    expectGeneratedBlock(KELO_RELIABILITY_PAGE, "interleavings",
                         "| Model | States | Orders |\n| --- | --- | --- |\n" + rowsOf(Models()));
}

} // namespace
} // namespace KeloAPI::testing
