#pragma once

#include <KeloAPI/base/Error.hpp>

#include <exception>
#include <memory>
#include <string>

namespace KeloAPI {

/// What a host's own parser may throw to fail with an error of its own. As with every parser's
/// error, an endpoint's completion hears the envelope's, with this one underlying.
class KELO_API ParserError final : public std::exception {
public:
    explicit ParserError(Error error); ///< What the completion finds as the underlying error.
    ParserError(const ParserError&) = default;
    ParserError& operator=(const ParserError&) = default;

    const Error& error() const { return _error; } ///< As given.
    /// The error's description.
    const char* what() const noexcept override { return _description->c_str(); }

private:
    Error _error;
    std::shared_ptr<const std::string> _description;
};

/// What the exception that is being handled says, as an error value: that of a parse error or of a
/// `ParserError`, otherwise one of the domain "KeloAPI.Exception". A lack of memory is thrown on:
/// it is not the fault of what was parsed.
KELO_API Error thrownParserError();

} // namespace KeloAPI
