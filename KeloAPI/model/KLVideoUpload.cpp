#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

namespace {

std::shared_ptr<KLVideoUploadProcessingInfo> processingInfoOf(const JsonObject& json) {
    const auto [state, progressPercent, checkAfterSecs] =
        json.values("state", "progressPercent", "checkAfterSecs");
    const auto known = required(videoUploadProcessingStateOf(state.text().value_or("")), "state");
    auto info = std::make_shared<KLVideoUploadProcessingInfo>(known);
    info->progressPercent = progressPercent.real();
    info->checkAfterSeconds = checkAfterSecs.real();
    return info;
}

} // namespace

std::shared_ptr<KLVideoUpload> KLVideoUploadParser::parse(const JsonObject& json) const {
    const auto [mediaId, expiresAfterSecs, size, processingInfo] =
        json.values("mediaId", "expiresAfterSecs", "size", "processingInfo");
    auto id = required(parseId(mediaId), "mediaId");
    auto upload = std::make_shared<KLVideoUpload>(std::move(id));
    if (const auto seconds = expiresAfterSecs.real()) {
        upload->expireDate = dateSinceNow(*seconds);
    }
    upload->size = size.integer();
    if (const auto info = processingInfo.object()) {
        upload->processingInfo = processingInfoOf(*info);
    }
    return upload;
}

} // namespace KeloAPI
