#include "service/store/Database.hpp"

namespace KeloService {
namespace {

/// "KELO", so that another program's database is not mistaken for ours.
constexpr std::int64_t applicationId = 0x4B454C4F;
constexpr std::int64_t schemaVersion = 7;

// Times are milliseconds since 1970 in UTC. Paths are relative to the service's own address, which
// is not known before it listens.
constexpr const char* tables = R"sql(
CREATE TABLE users (
    userId INTEGER PRIMARY KEY, username TEXT NOT NULL UNIQUE,
    passwordSalt TEXT NOT NULL, passwordHash TEXT NOT NULL,
    avatarPath TEXT NOT NULL, description TEXT NOT NULL, location TEXT NOT NULL,
    created INTEGER NOT NULL, verified INTEGER NOT NULL, private INTEGER NOT NULL,
    loopCount INTEGER NOT NULL, loopVelocity REAL NOT NULL,
    followerCount INTEGER NOT NULL, followingCount INTEGER NOT NULL, likeCount INTEGER NOT NULL
);
CREATE TABLE sessions (
    key TEXT PRIMARY KEY, userId INTEGER NOT NULL REFERENCES users,
    expired INTEGER NOT NULL DEFAULT 0, captchaToken TEXT
);
CREATE INDEX sessionsByCaptcha ON sessions (captchaToken);
CREATE TABLE channels (
    channelId INTEGER PRIMARY KEY, name TEXT NOT NULL, description TEXT NOT NULL,
    fontColor TEXT NOT NULL, backgroundColor TEXT NOT NULL, vanityUrl TEXT NOT NULL,
    created INTEGER NOT NULL
);
CREATE TABLE posts (
    postId INTEGER PRIMARY KEY, userId INTEGER NOT NULL REFERENCES users,
    channelId INTEGER REFERENCES channels,
    created INTEGER NOT NULL, caption TEXT NOT NULL, permalinkId TEXT NOT NULL UNIQUE,
    popularity INTEGER NOT NULL, pickRank INTEGER,
    loopCount INTEGER NOT NULL, loopVelocity REAL NOT NULL, onFire INTEGER NOT NULL,
    likeCount INTEGER NOT NULL, commentCount INTEGER NOT NULL, repostCount INTEGER NOT NULL,
    venueId TEXT REFERENCES venues, trackId INTEGER REFERENCES tracks
);
CREATE INDEX postsByCreated ON posts (created, postId);
CREATE INDEX postsByPopularity ON posts (popularity, postId);
CREATE INDEX postsByUser ON posts (userId, created, postId);
CREATE INDEX postsByChannel ON posts (channelId, popularity, postId);
CREATE INDEX postsByPick ON posts (pickRank, postId) WHERE pickRank IS NOT NULL;
CREATE TABLE renditions (
    postId INTEGER NOT NULL REFERENCES posts, position INTEGER NOT NULL,
    format TEXT NOT NULL, rate REAL NOT NULL, version TEXT NOT NULL, path TEXT NOT NULL,
    PRIMARY KEY (postId, position)
) WITHOUT ROWID;
CREATE TABLE tags (
    tagId INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, postCount INTEGER NOT NULL
);
CREATE TABLE postTags (
    postId INTEGER NOT NULL REFERENCES posts, tagId INTEGER NOT NULL REFERENCES tags,
    PRIMARY KEY (tagId, postId)
) WITHOUT ROWID;
CREATE INDEX postTagsByPost ON postTags (postId);
-- The stretches of captions that link somewhere, in code points.
CREATE TABLE entities (
    postId INTEGER NOT NULL REFERENCES posts, start INTEGER NOT NULL, end INTEGER NOT NULL,
    type TEXT NOT NULL, targetId INTEGER NOT NULL, title TEXT NOT NULL,
    PRIMARY KEY (postId, start)
) WITHOUT ROWID;
CREATE TABLE venues (
    venueId TEXT PRIMARY KEY, name TEXT NOT NULL,
    address TEXT, city TEXT NOT NULL, state TEXT, country TEXT NOT NULL,
    latitude REAL NOT NULL, longitude REAL NOT NULL, categoryId TEXT, categoryName TEXT
) WITHOUT ROWID;
CREATE TABLE tracks (
    trackId INTEGER PRIMARY KEY, name TEXT NOT NULL, artist TEXT NOT NULL,
    storeId INTEGER, affiliateToken TEXT, hasTimeline INTEGER NOT NULL, artPath TEXT
);
-- The stretch that links somewhere, where there is one, in code points.
CREATE TABLE bylines (
    postId INTEGER PRIMARY KEY REFERENCES posts, body TEXT NOT NULL, iconPath TEXT NOT NULL,
    start INTEGER, end INTEGER, type TEXT, targetId INTEGER, title TEXT
);
CREATE TABLE closedInserts (
    userId INTEGER NOT NULL REFERENCES users, reference TEXT NOT NULL,
    PRIMARY KEY (userId, reference)
) WITHOUT ROWID;
-- AUTOINCREMENT: the id of what was taken back must not come to mean something else.
CREATE TABLE likes (
    likeId INTEGER PRIMARY KEY AUTOINCREMENT, postId INTEGER NOT NULL REFERENCES posts,
    userId INTEGER NOT NULL REFERENCES users, created INTEGER NOT NULL,
    UNIQUE (postId, userId)
);
CREATE INDEX likesByUser ON likes (userId, created, postId);
CREATE TABLE comments (
    commentId INTEGER PRIMARY KEY, postId INTEGER NOT NULL REFERENCES posts,
    userId INTEGER NOT NULL REFERENCES users, created INTEGER NOT NULL, comment TEXT NOT NULL
);
CREATE INDEX commentsByPost ON comments (postId, created);
CREATE TABLE reposts (
    repostId INTEGER PRIMARY KEY AUTOINCREMENT, postId INTEGER NOT NULL REFERENCES posts,
    userId INTEGER NOT NULL REFERENCES users, created INTEGER NOT NULL,
    UNIQUE (postId, userId)
);
CREATE TABLE follows (
    userId INTEGER NOT NULL REFERENCES users, followeeId INTEGER NOT NULL REFERENCES users,
    PRIMARY KEY (userId, followeeId)
) WITHOUT ROWID;
CREATE TABLE outsideFollows (
    userId INTEGER NOT NULL REFERENCES users, followeeId INTEGER NOT NULL REFERENCES users,
    created INTEGER NOT NULL,
    PRIMARY KEY (userId, followeeId)
) WITHOUT ROWID;
CREATE TABLE feedback (
    feedbackId INTEGER PRIMARY KEY, userId INTEGER NOT NULL REFERENCES users,
    kind TEXT NOT NULL, targetId INTEGER NOT NULL, boost TEXT NOT NULL, created INTEGER NOT NULL
);
-- The reports, whose sum the counters of posts and users hold already; ts is the client's clock.
CREATE TABLE loops (
    loopsId INTEGER PRIMARY KEY, userId INTEGER NOT NULL REFERENCES users,
    postId INTEGER NOT NULL REFERENCES posts,
    count INTEGER NOT NULL, ts REAL NOT NULL, created INTEGER NOT NULL
);
CREATE TABLE longforms (
    longformId TEXT PRIMARY KEY, viewCount INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE views (
    viewId INTEGER PRIMARY KEY, userId INTEGER NOT NULL REFERENCES users,
    longformId TEXT NOT NULL REFERENCES longforms,
    timestamp TEXT NOT NULL, created INTEGER NOT NULL
);
CREATE TABLE uploads (
    mediaId TEXT PRIMARY KEY, userId INTEGER NOT NULL REFERENCES users,
    totalBytes INTEGER NOT NULL, expires INTEGER NOT NULL, finalized INTEGER,
    processingMilliseconds INTEGER NOT NULL DEFAULT 0, isPlayable INTEGER NOT NULL DEFAULT 0
);
-- The bytes are files of the upload folder.
CREATE TABLE uploadSegments (
    mediaId TEXT NOT NULL REFERENCES uploads, segmentIndex INTEGER NOT NULL,
    file TEXT NOT NULL, bytes INTEGER NOT NULL,
    PRIMARY KEY (mediaId, segmentIndex)
) WITHOUT ROWID;
CREATE TABLE sounds (
    soundId INTEGER PRIMARY KEY, name TEXT NOT NULL, path TEXT NOT NULL,
    featured INTEGER NOT NULL, sourcePostId INTEGER REFERENCES posts
);
)sql";

} // namespace

void prepareSchema(Database& database) {
    // The first statement that reads the file: what is no database at all fails here.
    const auto objects = database.number("SELECT count(*) FROM sqlite_master");
    const auto owner = database.number("PRAGMA application_id");
    if (owner != applicationId && (objects != 0 || owner != 0)) {
        throw DatabaseError("it belongs to another program");
    }
    if (owner == applicationId && database.number("PRAGMA user_version") != schemaVersion) {
        throw DatabaseError("it was made by another version");
    }
    database.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    if (owner != applicationId) {
        database.execute("BEGIN IMMEDIATE; " + std::string(tables) +
                         "; PRAGMA application_id = " + std::to_string(applicationId) +
                         "; PRAGMA user_version = " + std::to_string(schemaVersion) + "; COMMIT");
    }
}

} // namespace KeloService
