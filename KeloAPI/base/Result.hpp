#pragma once

#include <KeloAPI/base/Error.hpp>

#include <utility>
#include <variant>

namespace KeloAPI {

/// Either a value or the error that stands in its place.
template <class T>
class Result {
public:
    /// A value.
    Result(T value)
        : _outcome(std::in_place_index<0>, std::move(value)) {}
    /// The error in its place.
    Result(Error error)
        : _outcome(std::in_place_index<1>, std::move(error)) {}

    /// True where there is a value.
    explicit operator bool() const { return _outcome.index() == 0; }

    /// Only where there is a value.
    const T& value() const& { return std::get<0>(_outcome); }
    T& value() & { return std::get<0>(_outcome); }              ///< As above.
    T&& value() && { return std::get<0>(std::move(_outcome)); } ///< As above.
    /// Only where there is none.
    const Error& error() const { return std::get<1>(_outcome); }

private:
    std::variant<T, Error> _outcome;
};

} // namespace KeloAPI
