#include "service/http/FileAnswer.hpp"
#include "service/media/Mp4Check.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"
#include "service/store/Clock.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace KeloService {
namespace {

constexpr std::string_view mediaType = "video/mp4";
/// A terabyte: sums of segments cannot overflow.
constexpr std::int64_t mostBytes = std::int64_t{1} << 40;
constexpr std::int64_t mostSegments = 1000000;

[[noreturn]] void refuseUpload(const std::string& what) {
    throw ServiceError(400, ErrorCode::badRequest, what);
}

std::int64_t requiredInteger(const Call& call, const char* name, std::int64_t lowest,
                             std::int64_t highest) {
    const std::string text = call.request.parameter(name).value_or("");
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < lowest ||
        value > highest) {
        refuseUpload(std::string(name) + " must be an integer from " + std::to_string(lowest) +
                     " to " + std::to_string(highest));
    }
    return value;
}

[[noreturn]] void refuseUnknownVideo() {
    throw ServiceError(404, ErrorCode::notFound, "There is no such upload");
}

/// The user's own upload that the path names. Another's is not there for them.
Upload requireUpload(const Call& call, const Context& context) {
    const Session session = requireSession(call, context);
    const auto upload = context.store.uploads.find(call.argument("id"));
    if (!upload || upload->userId != session.userId) {
        refuseUnknownVideo();
    }
    if (upload->isExpired(currentMilliseconds())) {
        throw ServiceError(410, ErrorCode::gone, "The upload has expired");
    }
    return *upload;
}

[[noreturn]] void refuseClosed() {
    throw ServiceError(409, ErrorCode::conflict, "The upload takes no segments any more");
}

Answer initiate(const Call& call, const Context& context) {
    const Session session = requireSession(call, context);
    const std::int64_t totalBytes = requiredInteger(call, "totalBytes", 1, mostBytes);
    if (call.request.parameter("mediaType") != mediaType) {
        refuseUpload("mediaType must be " + std::string(mediaType));
    }
    const std::int64_t seconds = context.uploads.expirySeconds;
    const Upload upload = context.store.uploads.add(session.userId, totalBytes, 1000 * seconds);
    return dataAnswer({{"mediaId", upload.mediaId}, {"expiresAfterSecs", seconds}});
}

Answer takeSegment(const Call& call, RequestBody& body, const Context& context) {
    const Upload upload = requireUpload(call, context);
    if (upload.finalized) {
        refuseClosed();
    }
    const std::int64_t index = requiredInteger(call, "segmentIndex", 0, mostSegments);
    FileWriter file(context.store.uploadFolder);
    std::int64_t bytes = 0;
    bool isStored = true;
    const bool isWhole = body.read([&](std::string_view piece) {
        bytes += static_cast<std::int64_t>(piece.size());
        isStored = bytes <= upload.totalBytes && file.write(piece);
        return isStored;
    });
    if (bytes > upload.totalBytes) {
        refuseUpload("The segment is larger than the video was said to be");
    }
    if (!isStored) {
        throw ServiceError(500, ErrorCode::internal, "The segment cannot be stored");
    }
    if (!isWhole) {
        refuseUpload("The segment broke off");
    }
    if (bytes == 0) {
        refuseUpload("The segment is empty");
    }
    if (!context.store.uploads.keep(upload.mediaId, index, file)) {
        requireUpload(call, context); // it may have expired meanwhile
        refuseClosed();
    }
    return dataAnswer(Json::object());
}

/// Segments are counted from 0 or from 1.
void checkGapless(const std::vector<UploadSegment>& segments) {
    if (segments.empty()) {
        refuseUpload("The upload has no segments");
    }
    std::int64_t expected = segments.front().index == 1 ? 1 : 0;
    for (const UploadSegment& segment : segments) {
        if (segment.index != expected) {
            refuseUpload("Segment " + std::to_string(expected) + " is missing");
        }
        ++expected;
    }
}

struct Progress {
    const char* state = "pending";
    std::optional<double> percent;
    bool isFinal = false;
};

/// A fifth of the time it waits for its turn.
Progress progressOf(const Upload& upload) {
    constexpr double waiting = 0.2;
    const auto elapsed = static_cast<double>(currentMilliseconds() - *upload.finalized);
    const double done = upload.processingMilliseconds == 0
                            ? 1
                            : elapsed / static_cast<double>(upload.processingMilliseconds);
    if (done < waiting) {
        return {"pending", 0.0, false};
    }
    if (done < 1) {
        return {"in_progress", std::floor(1000 * (done - waiting) / (1 - waiting)) / 10, false};
    }
    return upload.isPlayable ? Progress{"succeeded", 100.0, true}
                             : Progress{"failed", std::nullopt, true};
}

std::string videoPath(const Upload& upload) {
    return "/media/longforms/" + upload.mediaId + ".mp4";
}

Json processingRecord(const Upload& upload) {
    const Progress progress = progressOf(upload);
    Json record{{"state", progress.state}};
    if (progress.percent) {
        record["progressPercent"] = *progress.percent;
    }
    if (!progress.isFinal) {
        const double seconds = static_cast<double>(upload.processingMilliseconds) / 1000;
        record["checkAfterSecs"] = std::clamp(seconds / 8, 0.05, 5.0);
    }
    return record;
}

/// "size" is what the service has of the video; all of it once it is finalized.
Json uploadRecord(const Upload& upload, const Context& context) {
    Json record{{"mediaId", upload.mediaId},
                {"size", context.store.uploads.joined(upload.mediaId).bytes()}};
    if (!upload.finalized) {
        record["expiresAfterSecs"] =
            static_cast<double>(upload.expires - currentMilliseconds()) / 1000;
        return record;
    }
    record["processingInfo"] = processingRecord(upload);
    if (record["processingInfo"]["state"] == "succeeded") {
        record["videoUrl"] = context.baseUrl + videoPath(upload);
    }
    return record;
}

Answer finalize(const Call& call, const Context& context) {
    const auto lock = context.store.database.lock();
    const Upload upload = requireUpload(call, context);
    // Whose first answer was lost may ask again.
    if (!upload.finalized) {
        checkGapless(context.store.uploads.segments(upload.mediaId));
        const JoinedFiles video = context.store.uploads.joined(upload.mediaId);
        if (video.bytes() != upload.totalBytes) {
            refuseUpload("The segments have " + std::to_string(video.bytes()) + " bytes, not the " +
                         std::to_string(upload.totalBytes) + " that were announced");
        }
        const bool isPlayable =
            isMp4(video.bytes(), [&video](std::int64_t offset, std::size_t count) {
                return video.read(offset, count);
            });
        context.store.uploads.finalize(
            upload.mediaId,
            static_cast<std::int64_t>(1000 * context.uploads.processingSeconds.load()), isPlayable);
    }
    return dataAnswer(uploadRecord(*context.store.uploads.find(upload.mediaId), context));
}

Answer uploadedVideo(const Call& call, const Context& context) {
    constexpr std::string_view ending = ".mp4";
    const std::string& file = call.argument("file");
    const std::string mediaId =
        file.ends_with(ending) ? file.substr(0, file.size() - ending.size()) : std::string();
    const auto upload = context.store.uploads.find(mediaId);
    if (!upload || !upload->finalized || !upload->isPlayable || !progressOf(*upload).isFinal) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such file");
    }
    const JoinedFiles video = context.store.uploads.joined(mediaId);
    Answer answer =
        fileAnswer(call.request, std::string(mediaType),
                   AnswerStream{static_cast<std::uint64_t>(video.bytes()),
                                [video](std::uint64_t offset, std::size_t count) {
                                    return video.read(static_cast<std::int64_t>(offset), count);
                                }},
                   mediaId);
    answer.atMediaRate = true;
    return answer;
}

} // namespace

void addUploadRoutes(Router& router, const Context& context) {
    router.add("POST", "/upload/longform-videos",
               [&context](const Call& call) { return initiate(call, context); });
    router.addStream("PUT", "/upload/longform-videos/:id",
                     [&context](const Call& call, RequestBody& body) {
                         return takeSegment(call, body, context);
                     });
    router.add("POST", "/upload/longform-videos/:id",
               [&context](const Call& call) { return finalize(call, context); });
    router.add("GET", "/upload/longform-videos/:id/status", [&context](const Call& call) {
        return dataAnswer(uploadRecord(requireUpload(call, context), context));
    });
    router.add("GET", "/media/longforms/:file",
               [&context](const Call& call) { return uploadedVideo(call, context); });
}

} // namespace KeloService
