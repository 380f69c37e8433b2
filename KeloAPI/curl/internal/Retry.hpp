#pragma once

#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/Method.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <chrono>
#include <cstdint>
#include <optional>

namespace KeloAPI {

/// True for a method that does the same when it is sent twice.
bool isRepeatable(Method method);

/// True for a response that says that it will be another one later.
bool isPassingStatus(int statusCode);

/// The pause before retry number `retry`, counted from 0, after a response with these fields, if
/// one came. `seed` chooses its random part. None where the server asks for a longer one than is
/// allowed.
std::optional<std::chrono::milliseconds> retryPause(const RetrySettings& settings, int retry,
                                                    const HeaderFields& fields, std::uint64_t seed);

} // namespace KeloAPI
