#pragma once

#include "service/http/Answer.hpp"
#include "service/store/Posts.hpp"

#include <string>

namespace KeloService {

/// A post as a record of a timeline page; the author's fields lie at its top level.
Json postRecord(const Post& post, const std::string& baseUrl);

/// A like and a repost, with the fields of the user who gave it at the top level.
Json likeRecord(const Like& like, const std::string& baseUrl);
Json repostRecord(const Repost& repost, const std::string& baseUrl);

} // namespace KeloService
