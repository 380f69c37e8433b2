#pragma once

#include "MainLoop.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

namespace KeloAPI::testing {

/// Makes a call with a completion, runs the main queue until that has run, and gives what it was
/// handed: its value, or a tuple of several. Fails the test where it does not run.
template <class... Values>
auto awaited(
    const std::type_identity_t<std::function<void(std::function<void(Values...)>)>>& call) {
    const auto handed = std::make_shared<std::optional<std::tuple<Values...>>>();
    call([handed](Values... values) { handed->emplace(std::move(values)...); });
    EXPECT_TRUE(runUntil([&] { return handed->has_value(); }));
    if constexpr (sizeof...(Values) == 1) {
        return std::get<0>(std::move(handed->value()));
    } else {
        return std::move(handed->value());
    }
}

} // namespace KeloAPI::testing
