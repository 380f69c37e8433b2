#pragma once

#include <string>

namespace KeloService {

/// Hexadecimal text of so many random bytes.
std::string randomText(int bytes);

/// What is kept of a password.
std::string hashPassword(const std::string& password, const std::string& salt);

} // namespace KeloService
