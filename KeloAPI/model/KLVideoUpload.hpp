#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/model/KLVideoUploadProcessingInfo.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// An upload session of a long-form video, as the service last described it. One thread at a time.
class KELO_API KLVideoUpload final : public Object {
public:
    /// All else is absent.
    explicit KLVideoUpload(std::string identifier)
        : mediaId(std::move(identifier)) {}

    /// "mediaId", sent as text or as a number: names the session in every later call.
    const std::string mediaId;

    /// "expiresAfterSecs" from the moment of parsing: when the service forgets the session;
    /// absent when it does not say.
    std::optional<Date> expireDate;
    /// "processingInfo"; null until the service reports it.
    std::shared_ptr<KLVideoUploadProcessingInfo> processingInfo;
    /// "size": in bytes; absent when the service does not say.
    std::optional<std::int64_t> size;
};

/// Needs "mediaId" as text or number, and where "processingInfo" is an object, its "state" as one
/// of the service's texts (`InsufficientData`).
class KELO_API KLVideoUploadParser final : public JsonParser<KLVideoUpload> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLVideoUpload> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
