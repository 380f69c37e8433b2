#pragma once

#include "service/store/Actions.hpp"
#include "service/store/Channels.hpp"
#include "service/store/ClosedInserts.hpp"
#include "service/store/Database.hpp"
#include "service/store/Feedback.hpp"
#include "service/store/Feeds.hpp"
#include "service/store/Follows.hpp"
#include "service/store/Images.hpp"
#include "service/store/Likes.hpp"
#include "service/store/Longforms.hpp"
#include "service/store/Loops.hpp"
#include "service/store/Posts.hpp"
#include "service/store/Reposts.hpp"
#include "service/store/Sessions.hpp"
#include "service/store/Sounds.hpp"
#include "service/store/UploadFolder.hpp"
#include "service/store/Uploads.hpp"
#include "service/store/Users.hpp"
#include "service/store/Venues.hpp"

#include <string>

namespace KeloService {

/// All that the service remembers. An empty database is seeded; one with content stays as it is.
class Store {
public:
    /// Throws DatabaseError.
    explicit Store(const std::string& file);

    Database database;
    Users users;
    Sessions sessions;
    Channels channels;
    Venues venues;
    Posts posts;
    Feeds feeds;
    Likes likes;
    Reposts reposts;
    Follows follows;
    Feedback feedback;
    Loops loops;
    Longforms longforms;
    Sounds sounds;
    Images images;
    ClosedInserts closedInserts;
    UploadFolder uploadFolder;
    Uploads uploads;
    Actions actions;
};

} // namespace KeloService
