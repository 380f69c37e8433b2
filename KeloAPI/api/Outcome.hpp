#pragma once

#include <KeloAPI/base/Error.hpp>

#include <utility>

// X11's headers make Success a macro: it is set aside for the length of this file.
#pragma push_macro("Success")
#undef Success

namespace KeloAPI {

/// How a call ended: in one of two cases, `Success` with what it brought, or `Error` with the error
/// that the call reported.
template <class SuccessCase>
class Outcome {
public:
    using Success = SuccessCase; ///< The case of a success.
    /// The case of a failure.
    struct Error {
        KeloAPI::Error error; ///< What went wrong.
    };

    /// A call that went well.
    Outcome(Success success)
        : _case(std::move(success)) {}
    /// A call that failed.
    Outcome(Error error)
        : _case(std::move(error)) {}

    /// What the call brought; null in the other case. With `auto` a host need not write `Success`
    /// where that is a macro.
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

#pragma pop_macro("Success")
