#include "service/store/Uploads.hpp"

#include "service/store/Clock.hpp"
#include "service/store/Password.hpp"

namespace KeloService {
namespace {

constexpr const char* selection = "SELECT mediaId, userId, totalBytes, expires, finalized, "
                                  "processingMilliseconds, isPlayable FROM uploads ";

Upload readUpload(const Query& query) {
    Upload upload;
    upload.mediaId = query.text(0);
    upload.userId = query.integer(1);
    upload.totalBytes = query.integer(2);
    upload.expires = query.integer(3);
    if (!query.isNull(4)) {
        upload.finalized = query.integer(4);
    }
    upload.processingMilliseconds = query.integer(5);
    upload.isPlayable = query.boolean(6);
    return upload;
}

} // namespace

Upload Uploads::add(std::int64_t userId, std::int64_t totalBytes,
                    std::int64_t lifetimeMilliseconds) {
    const std::int64_t now = currentMilliseconds();
    Upload upload;
    upload.mediaId = randomText(12);
    upload.userId = userId;
    upload.totalBytes = totalBytes;
    upload.expires = now + lifetimeMilliseconds;
    const auto lock = database_.lock();
    removeExpired(now);
    database_
        .query("INSERT INTO uploads (mediaId, userId, totalBytes, expires) "
               "VALUES (?1, ?2, ?3, ?4)")
        .bind(upload.mediaId, userId, totalBytes, upload.expires)
        .run();
    return upload;
}

std::optional<Upload> Uploads::find(const std::string& mediaId) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(selection) + "WHERE mediaId = ?1");
    return query.bind(mediaId).next() ? std::optional(readUpload(query)) : std::nullopt;
}

std::vector<Upload> Uploads::list() {
    const auto lock = database_.lock();
    std::vector<Upload> uploads;
    Query query = database_.query(std::string(selection) + "ORDER BY rowid");
    while (query.next()) {
        uploads.push_back(readUpload(query));
    }
    return uploads;
}

std::vector<UploadSegment> Uploads::segments(const std::string& mediaId) {
    const auto lock = database_.lock();
    std::vector<UploadSegment> segments;
    Query query = database_.query("SELECT segmentIndex, file, bytes FROM uploadSegments "
                                  "WHERE mediaId = ?1 ORDER BY segmentIndex");
    query.bind(mediaId);
    while (query.next()) {
        segments.push_back({query.integer(0), {query.text(1), query.integer(2)}});
    }
    return segments;
}

bool Uploads::keep(const std::string& mediaId, std::int64_t index, FileWriter& file) {
    const auto lock = database_.lock();
    const auto upload = find(mediaId);
    if (!upload || upload->finalized || upload->isExpired(currentMilliseconds())) {
        return false;
    }
    std::optional<std::string> replaced;
    {
        Query query = database_.query("SELECT file FROM uploadSegments "
                                      "WHERE mediaId = ?1 AND segmentIndex = ?2");
        if (query.bind(mediaId, index).next()) {
            replaced = query.text(0);
        }
    }
    database_
        .query("INSERT OR REPLACE INTO uploadSegments (mediaId, segmentIndex, file, bytes) "
               "VALUES (?1, ?2, ?3, ?4)")
        .bind(mediaId, index, file.file().name, file.file().bytes)
        .run();
    file.keep();
    if (replaced) {
        folder_.remove(*replaced);
    }
    return true;
}

void Uploads::finalize(const std::string& mediaId, std::int64_t processingMilliseconds,
                       bool isPlayable) {
    const auto lock = database_.lock();
    database_
        .query("UPDATE uploads SET finalized = ?2, processingMilliseconds = ?3, isPlayable = ?4 "
               "WHERE mediaId = ?1")
        .bind(mediaId, currentMilliseconds(), processingMilliseconds, isPlayable)
        .run();
}

bool Uploads::expire(const std::string& mediaId) {
    const auto lock = database_.lock();
    if (!find(mediaId)) {
        return false;
    }
    database_.query("UPDATE uploads SET expires = ?2 WHERE mediaId = ?1")
        .bind(mediaId, currentMilliseconds())
        .run();
    return true;
}

JoinedFiles Uploads::joined(const std::string& mediaId) {
    std::vector<StoredFile> files;
    for (UploadSegment& segment : segments(mediaId)) {
        files.push_back(std::move(segment.file));
    }
    return {folder_, std::move(files)};
}

void Uploads::removeExpired(std::int64_t now) {
    for (const Upload& upload : list()) {
        if (!upload.isExpired(now)) {
            continue;
        }
        for (const UploadSegment& segment : segments(upload.mediaId)) {
            folder_.remove(segment.file.name);
        }
        database_.query("DELETE FROM uploadSegments WHERE mediaId = ?1").bind(upload.mediaId).run();
    }
}

} // namespace KeloService
