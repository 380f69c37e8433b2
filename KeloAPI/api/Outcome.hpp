#pragma once

#include <KeloAPI/platform/Error.hpp>

#include <utility>
#include <variant>

namespace KeloAPI {

/// How a call ended: in one of two cases, `Success` with what it brought, or `Error` with the error
/// that the call reported.
template <class SuccessCase>
class Outcome {
public:
    using Success = SuccessCase;
    struct Error {
        KeloAPI::Error error;
    };

    Outcome(Success success)
        : _case(std::move(success)) {}
    Outcome(Error error)
        : _case(std::move(error)) {}

    /// Null in the other case.
    const Success* success() const { return std::get_if<Success>(&_case); }
    /// Null in the other case.
    const KeloAPI::Error* error() const {
        const auto* failed = std::get_if<Error>(&_case);
        return failed == nullptr ? nullptr : &failed->error;
    }

private:
    std::variant<Success, Error> _case;
};

} // namespace KeloAPI
