#pragma once

#include <KeloAPI/base/Result.hpp>
#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/URLRequest.hpp>

namespace KeloAPI {

/// The most redirects that one exchange follows.
inline constexpr int maxRedirects = 20;

/// True for a response that sends the client elsewhere.
bool isRedirect(int statusCode, const HeaderFields& fields);

/// The request that follows `request` where a redirect answered it; `UnsupportedURL` when it leads
/// to no URL of http or https, and `ServerTrust` when it leads from https to http. See the status
/// codes' sections of RFC 9110.
Result<URLRequest> redirected(const URLRequest& request, int statusCode,
                              const HeaderFields& fields);

} // namespace KeloAPI
