#include <KeloAPI/parsing/JsonParseError.hpp>
#include <KeloAPI/parsing/ParserError.hpp>

#include <new>
#include <utility>

namespace KeloAPI {

ParserError::ParserError(Error error)
    : _error(std::move(error))
    , _description(std::make_shared<std::string>(_error.description())) {}

Error thrownParserError() {
    constexpr const char* domain = "KeloAPI.Exception";
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const JsonParseError& error) {
        return error.error();
    } catch (const ParserError& error) {
        return error.error();
    } catch (const std::exception& error) {
        return Error::withMessage(domain, 0, error.what());
    } catch (...) {
        return Error::withMessage(domain, 0, "an exception of an unknown type");
    }
}

} // namespace KeloAPI
