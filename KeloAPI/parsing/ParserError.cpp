#include <KeloAPI/parsing/ParserError.hpp>

#include <utility>

namespace KeloAPI {

ParserError::ParserError(Error error)
    : _error(std::move(error))
    , _description(std::make_shared<std::string>(_error.description())) {}

ParserError::~ParserError() = default;

} // namespace KeloAPI
