#include "service/Clock.hpp"
#include "service/Encoding.hpp"
#include "service/http/FileAnswer.hpp"
#include "service/media/Mp4.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace KeloService {
namespace {

constexpr const char* uploadType = "video/mp4";
/// A terabyte: sums of segments cannot overflow.
constexpr std::int64_t mostBytes = std::int64_t{1} << 40;
constexpr std::int64_t mostSegments = 1000000;

/// A long-form video on its way to the service. Times are milliseconds since 1970.
struct Upload {
    std::string mediaId;
    std::int64_t userId = 0;
    std::int64_t totalBytes = 0;
    std::int64_t expires = 0;
    /// When the last segment had come; absent as long as segments are taken.
    std::optional<std::int64_t> finalized;
    /// How long it is processed from then on.
    std::int64_t processingMilliseconds = 0;
    /// Whether that ends well.
    bool isPlayable = false;

    bool isExpired() const { return !finalized && currentMilliseconds() >= expires; }
};

std::optional<Upload> findUpload(const Context& context, const std::string& mediaId) {
    Query row = context.database.query(
        "SELECT userId, totalBytes, expires, processingMilliseconds, isPlayable, finalized "
        "FROM uploads WHERE mediaId = ?1",
        mediaId);
    if (!row.next()) {
        return std::nullopt;
    }
    Upload upload{mediaId,      row.integer(0), row.integer(1),     row.integer(2),
                  std::nullopt, row.integer(3), row.integer(4) != 0};
    if (!row.isNull(5)) {
        upload.finalized = row.integer(5);
    }
    return upload;
}

ServiceError unknownUpload() {
    return {404, "There is no such upload"};
}

/// The user's own upload that the path names. Another's is not there for them.
Upload requireUpload(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const auto upload = findUpload(context, call.argument("id"));
    if (!upload || upload->userId != userId) {
        throw unknownUpload();
    }
    if (upload->isExpired()) {
        throw ServiceError(410, "The upload has expired");
    }
    return *upload;
}

/// One that takes segments.
Upload requireOpenUpload(const Call& call, const Context& context) {
    Upload upload = requireUpload(call, context);
    if (upload.finalized) {
        throw ServiceError(409, "The upload takes no segments any more");
    }
    return upload;
}

std::int64_t requiredInteger(const Call& call, const char* name, std::int64_t lowest,
                             std::int64_t highest) {
    const auto value = parseNumber<std::int64_t>(call.request.parameter(name).value_or(""));
    if (!value || *value < lowest || *value > highest) {
        throw ServiceError(400, std::string(name) + " must be an integer from " +
                                    std::to_string(lowest) + " to " + std::to_string(highest));
    }
    return *value;
}

/// Throws away what expired uploads had.
void removeExpired(const Context& context) {
    const std::int64_t now = currentMilliseconds();
    const std::string expired = "FROM uploadSegments WHERE mediaId IN (SELECT mediaId FROM uploads "
                                "WHERE finalized IS NULL AND expires <= ?1)";
    {
        Query query = context.database.query("SELECT file " + expired, now);
        while (query.next()) {
            context.uploadFolder.remove(query.text(0));
        }
    }
    context.database.run("DELETE " + expired, now);
}

Answer initiate(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::int64_t totalBytes = requiredInteger(call, "totalBytes", 1, mostBytes);
    if (call.request.parameter("mediaType") != uploadType) {
        throw ServiceError(400, std::string("mediaType must be ") + uploadType);
    }
    const std::int64_t seconds = context.uploadTimes.expirySeconds;
    const std::string mediaId = randomText(12);
    context.database.transact([&] {
        removeExpired(context);
        context.database.run("INSERT INTO uploads (mediaId, userId, totalBytes, expires) "
                             "VALUES (?1, ?2, ?3, ?4)",
                             mediaId, userId, totalBytes, currentMilliseconds() + 1000 * seconds);
    });
    return dataAnswer({{"mediaId", mediaId}, {"expiresAfterSecs", seconds}});
}

/// Puts the file in the segment's place, if the upload still takes segments.
void keepSegment(const Call& call, const Context& context, std::int64_t index, FileWriter& file) {
    const std::string& mediaId = call.argument("id");
    std::optional<std::string> replaced;
    context.database.transact([&] {
        requireOpenUpload(call, context);
        replaced = context.database.text(
            "SELECT file FROM uploadSegments WHERE mediaId = ?1 AND segmentIndex = ?2", mediaId,
            index);
        context.database.run("INSERT OR REPLACE INTO uploadSegments "
                             "(mediaId, segmentIndex, file, bytes) VALUES (?1, ?2, ?3, ?4)",
                             mediaId, index, file.file().name, file.file().bytes);
    });
    file.keep();
    if (replaced) {
        context.uploadFolder.remove(*replaced);
    }
}

Answer takeSegment(const Call& call, const Context& context) {
    const Upload upload = requireOpenUpload(call, context);
    const std::int64_t index = requiredInteger(call, "segmentIndex", 0, mostSegments);
    FileWriter file(context.uploadFolder);
    std::int64_t bytes = 0;
    bool isStored = true;
    const bool isWhole = call.body.read([&](std::string_view piece) {
        bytes += static_cast<std::int64_t>(piece.size());
        isStored = bytes <= upload.totalBytes && file.write(piece);
        return isStored;
    });
    if (bytes > upload.totalBytes) {
        throw ServiceError(400, "The segment is larger than the video was said to be");
    }
    if (!isStored) {
        throw ServiceError(500, "The segment cannot be stored");
    }
    if (!isWhole) {
        throw ServiceError(400, "The segment broke off");
    }
    if (bytes == 0) {
        throw ServiceError(400, "The segment is empty");
    }
    keepSegment(call, context, index, file);
    return dataAnswer();
}

struct Segment {
    std::int64_t index = 0;
    StoredFile file;
};

/// Everything that an upload has, in order.
std::vector<Segment> segmentsOf(const Context& context, const std::string& mediaId) {
    std::vector<Segment> segments;
    Query query = context.database.query("SELECT segmentIndex, file, bytes FROM uploadSegments "
                                         "WHERE mediaId = ?1 ORDER BY segmentIndex",
                                         mediaId);
    while (query.next()) {
        segments.push_back({query.integer(0), {query.text(1), query.integer(2)}});
    }
    return segments;
}

/// The segments as one file that is read as it is sent.
AnswerStream joined(const Context& context, const std::vector<Segment>& segments) {
    AnswerStream video;
    std::vector<StoredFile> files;
    for (const Segment& segment : segments) {
        video.bytes += static_cast<std::uint64_t>(segment.file.bytes);
        files.push_back(segment.file);
    }
    video.read = [files, &folder = context.uploadFolder](std::uint64_t offset, std::size_t count) {
        return folder.read(files, static_cast<std::int64_t>(offset), count);
    };
    return video;
}

/// Segments are counted from 0 or from 1.
void checkGapless(const std::vector<Segment>& segments) {
    if (segments.empty()) {
        throw ServiceError(400, "The upload has no segments");
    }
    std::int64_t expected = segments.front().index == 1 ? 1 : 0;
    for (const Segment& segment : segments) {
        if (segment.index != expected) {
            throw ServiceError(400, "Segment " + std::to_string(expected) + " is missing");
        }
        ++expected;
    }
}

/// How much of the processing is done, from 0 to 1.
double doneOf(const Upload& upload) {
    const auto elapsed = static_cast<double>(currentMilliseconds() - *upload.finalized);
    return upload.processingMilliseconds == 0
               ? 1
               : std::min(1.0, elapsed / static_cast<double>(upload.processingMilliseconds));
}

/// A fifth of the time it waits for its turn.
Json processingRecord(const Upload& upload) {
    constexpr double waiting = 0.2;
    const double done = doneOf(upload);
    if (done == 1) {
        return upload.isPlayable ? Json{{"state", "succeeded"}, {"progressPercent", 100.0}}
                                 : Json{{"state", "failed"}};
    }
    const double seconds = static_cast<double>(upload.processingMilliseconds) / 1000;
    const double percent = std::floor(1000 * (done - waiting) / (1 - waiting)) / 10;
    return {{"state", done < waiting ? "pending" : "in_progress"},
            {"progressPercent", std::max(percent, 0.0)},
            {"checkAfterSecs", std::clamp(seconds / 8, 0.05, 5.0)}};
}

/// "size" is what the service has of the video; all of it once it is finalized.
Answer uploadAnswer(const Upload& upload, const Context& context) {
    const AnswerStream video = joined(context, segmentsOf(context, upload.mediaId));
    Json record{{"mediaId", upload.mediaId}, {"size", video.bytes}};
    if (!upload.finalized) {
        record["expiresAfterSecs"] =
            static_cast<double>(upload.expires - currentMilliseconds()) / 1000;
        return dataAnswer(record);
    }
    record["processingInfo"] = processingRecord(upload);
    if (record["processingInfo"]["state"] == "succeeded") {
        record["videoUrl"] = context.baseUrl + "/media/longforms/" + upload.mediaId + ".mp4";
    }
    return dataAnswer(record);
}

Answer showStatus(const Call& call, const Context& context) {
    return uploadAnswer(requireUpload(call, context), context);
}

void finalizeOpen(const Upload& upload, const Context& context) {
    const auto segments = segmentsOf(context, upload.mediaId);
    checkGapless(segments);
    const AnswerStream video = joined(context, segments);
    const auto bytes = static_cast<std::int64_t>(video.bytes);
    if (bytes != upload.totalBytes) {
        throw ServiceError(400, "The segments have " + std::to_string(bytes) + " bytes, not the " +
                                    std::to_string(upload.totalBytes) + " that were announced");
    }
    const bool isPlayable = isMp4(bytes, [&video](std::int64_t offset, std::size_t count) {
        return video.read(static_cast<std::uint64_t>(offset), count);
    });
    context.database.run("UPDATE uploads SET finalized = ?2, processingMilliseconds = ?3, "
                         "isPlayable = ?4 WHERE mediaId = ?1",
                         upload.mediaId, currentMilliseconds(),
                         static_cast<std::int64_t>(1000 * context.uploadTimes.processingSeconds),
                         isPlayable);
}

Answer finalize(const Call& call, const Context& context) {
    context.database.transact([&] {
        const Upload upload = requireUpload(call, context);
        // Whose first answer was lost may ask again.
        if (!upload.finalized) {
            finalizeOpen(upload, context);
        }
    });
    return showStatus(call, context);
}

Answer serveVideo(const Call& call, const Context& context) {
    constexpr std::string_view ending = ".mp4";
    const std::string& file = call.argument("file");
    const std::string mediaId =
        file.ends_with(ending) ? file.substr(0, file.size() - ending.size()) : std::string();
    const auto upload = findUpload(context, mediaId);
    if (!upload || !upload->finalized || !upload->isPlayable || doneOf(*upload) < 1) {
        throw ServiceError(404, "There is no such file");
    }
    return fileAnswer(call.request, uploadType, joined(context, segmentsOf(context, mediaId)),
                      mediaId);
}

Answer listUploads(const Call& /*call*/, const Context& context) {
    Json uploads = records(context, "SELECT mediaId, userId, totalBytes, "
                                    "finalized IS NOT NULL AS \"finalized?\" "
                                    "FROM uploads ORDER BY rowid");
    for (Json& upload : uploads) {
        upload["segments"] = records(context,
                                     "SELECT segmentIndex AS \"index\", bytes "
                                     "FROM uploadSegments WHERE mediaId = ?1 ORDER BY segmentIndex",
                                     upload["mediaId"].get<std::string>());
    }
    return jsonAnswer({{"uploads", uploads}});
}

Answer expireUpload(const Call& call, const Context& context) {
    if (context.database.run("UPDATE uploads SET expires = ?2 WHERE mediaId = ?1",
                             call.argument("id"), currentMilliseconds()) == 0) {
        throw unknownUpload();
    }
    return jsonAnswer();
}

} // namespace

void addUploadRoutes(Routes& routes) {
    routes.add("POST", "/upload/longform-videos", initiate);
    routes.add("PUT", "/upload/longform-videos/:id", takeSegment, Router::Body::Streamed);
    routes.add("POST", "/upload/longform-videos/:id", finalize);
    routes.add("GET", "/upload/longform-videos/:id/status", showStatus);
    routes.add("GET", "/media/longforms/:file", serveVideo);
    routes.add("GET", "/_service/uploads", listUploads);
    routes.add("POST", "/_service/uploads/:id/expire", expireUpload);
}

} // namespace KeloService
