#pragma once

#include "service/store/Database.hpp"
#include "service/store/UploadFolder.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

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

    bool isExpired(std::int64_t now) const { return !finalized && now >= expires; }
};

struct UploadSegment {
    std::int64_t index = 0;
    StoredFile file;
};

/// The upload sessions and their segments. Safe to use from any thread.
class Uploads {
public:
    Uploads(Database& database, const UploadFolder& folder)
        : database_(database)
        , folder_(folder) {}

    /// A new session. Also throws away what expired sessions had.
    Upload add(std::int64_t userId, std::int64_t totalBytes, std::int64_t lifetimeMilliseconds);
    std::optional<Upload> find(const std::string& mediaId);
    std::vector<Upload> list();
    /// In the order of their indices.
    std::vector<UploadSegment> segments(const std::string& mediaId);
    /// Puts the file in the segment's place. False when the session takes no segments any more.
    bool keep(const std::string& mediaId, std::int64_t index, FileWriter& file);
    void finalize(const std::string& mediaId, std::int64_t processingMilliseconds, bool isPlayable);
    /// False when there is no such session.
    bool expire(const std::string& mediaId);
    /// Everything that the session has, in order.
    JoinedFiles joined(const std::string& mediaId);

private:
    void removeExpired(std::int64_t now);

    Database& database_;
    const UploadFolder& folder_;
};

} // namespace KeloService
