#pragma once

#include <KeloAPI/base/Result.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/json/Json.hpp>

#include <string>

namespace KeloAPI {

/// The body as JSON. The exchange's own error comes first; no body at all is `EmptyBody`, malformed
/// JSON is `BadJson`. The status plays no part.
KELO_API Result<JsonDocument> serializeJSON(const ResponseContent& content);

/// The body as UTF-8 text, converted from the character set that Content-Type names; as it is when
/// none is named. The exchange's own error comes first; bytes that are not text of that set, and
/// a set that is not known, are `TextEncoding`. An empty body is an empty text.
KELO_API Result<std::string> serializeText(const ResponseContent& content);

} // namespace KeloAPI
