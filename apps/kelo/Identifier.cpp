#include "Identifier.hpp"

#include <algorithm>

namespace KeloHost {

std::string checkIdentifier(const std::string& text) {
    const bool good = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == '-' || c == '_';
    });
    return good ? "" : "'" + text + "' is no identifier";
}

CLI::Option* addIdentifier(CLI::App& command, const std::string& name, std::string& identifier,
                           const std::string& description) {
    return command.add_option(name, identifier, description)
        ->required()
        ->type_name("")
        ->check(checkIdentifier);
}

} // namespace KeloHost
