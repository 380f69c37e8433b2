#include "Identifier.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

std::string checkIdentifier(const std::string& identifier) {
    const bool good =
        !identifier.empty() && std::all_of(identifier.begin(), identifier.end(), [](char c) {
            return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                   c == '-' || c == '_';
        });
    return good ? "" : "'" + identifier + "' is no identifier";
}

} // namespace

CLI::Option* addIdentifier(CLI::App& command, const std::string& name, std::string& identifier,
                           const std::string& description) {
    return command.add_option(name, identifier, description)
        ->required()
        ->type_name("")
        ->check(checkIdentifier);
}

} // namespace KeloHost
