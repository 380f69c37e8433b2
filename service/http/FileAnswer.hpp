#pragma once

#include "service/http/Answer.hpp"
#include "service/http/Request.hpp"

#include <string>

namespace KeloService {

/// Answers a GET or HEAD with a file: the whole of it (200), or the one range of bytes that a GET
/// asks for (206, or 416 when it begins behind the file's end). Several ranges, other units and an
/// If-Range that is not the file's entity tag get the whole file. `tag` is what the entity tag
/// tells the file by.
Answer fileAnswer(const Request& request, const std::string& contentType, AnswerStream file,
                  const std::string& tag);

} // namespace KeloService
