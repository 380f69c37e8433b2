#pragma once

#include <memory>
#include <utility>

namespace KeloAPI {

class Session;

namespace testing {

/// Whether `E::create` takes these.
template <class E, class... Arguments>
concept createdWith = requires(Arguments... arguments) {
    E::create(arguments...);
};

/// Whether one can write `E endpoint({}, arguments...);`.
template <class E, class... Arguments>
concept madeOnTheStack = requires(Arguments... arguments) {
    E({}, arguments...);
};

/// What a class looks like that can: the question has a yes, too.
struct OnTheStack {
    struct Key {};
    OnTheStack(Key /*key*/, std::shared_ptr<Session> /*session*/) {}
};
static_assert(madeOnTheStack<OnTheStack, std::shared_ptr<Session>>);

} // namespace testing

} // namespace KeloAPI
