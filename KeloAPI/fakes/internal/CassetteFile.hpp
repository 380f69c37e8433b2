#pragma once

#include <KeloAPI/base/Result.hpp>
#include <KeloAPI/fakes/internal/RecordedExchange.hpp>
#include <KeloAPI/http/internal/Secrets.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace KeloAPI::fakes {

/// What is in a cassette's file. Its version goes up when older readers would misread it.
inline constexpr int cassetteVersion = 1;

struct CassetteFile {
    SecretNames secretNames;
    std::size_t maxBodyBytes = 0;
    std::vector<RecordedExchange> exchanges;
};

std::string cassetteText(const CassetteFile& file);

/// Fails with `CassetteErrorCode::Format`.
Result<CassetteFile> readCassette(const std::string& text);

} // namespace KeloAPI::fakes
