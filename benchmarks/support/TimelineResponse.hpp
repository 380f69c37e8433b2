#pragma once

#include <cstddef>
#include <string>

namespace KeloBenchmark {

/// The bytes of a timeline response as the service sends it: the envelope, the paging keys and so
/// many records with everything that belongs to a post, not only what the library reads. The same
/// bytes on every call and every machine. Has the spare capacity that the HTTP layer leaves behind
/// a body.
std::string timelineResponse(std::size_t records);

} // namespace KeloBenchmark
