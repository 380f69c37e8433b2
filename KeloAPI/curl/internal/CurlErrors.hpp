#pragma once

#include <KeloAPI/base/Error.hpp>

#include <curl/curl.h>

#include <string_view>

namespace KeloAPI {

/// Domain of the underlying error of a failed exchange; its codes are libcurl's.
inline constexpr std::string_view CurlErrorDomain = "libcurl";

/// The HTTP layer's error for a failed transfer, with libcurl's own below it. `detail` is what
/// libcurl said about this transfer; empty for its general text.
Error curlError(CURLcode code, std::string_view detail);

} // namespace KeloAPI
