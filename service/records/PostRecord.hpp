#pragma once

#include "service/http/Answer.hpp"
#include "service/store/Posts.hpp"

#include <string>

namespace KeloService {

/// A post as a record of a timeline page; the author's fields lie at its top level.
Json postRecord(const Post& post, const std::string& baseUrl);

} // namespace KeloService
