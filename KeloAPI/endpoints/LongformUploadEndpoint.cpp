#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/internal/completeUpload.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

namespace KeloAPI {

namespace {

constexpr const char* uploadsPath = "/upload/longform-videos";

std::string uploadPath(const std::string& mediaId) {
    return std::string(uploadsPath) + "/" + mediaId;
}

std::optional<Error> encodeForSegment(URLRequest& request, const Parameters& parameters) {
    request.headerFields.insert_or_assign("Content-Type", "application/octet-stream");
    return ParameterEncoding::URL.encode(request, parameters);
}

} // namespace

LongformUploadEndpoint::LongformUploadEndpoint(Key key)
    : Endpoint(key, Api::session(SessionType::Authenticated)) {}

std::shared_ptr<LongformUploadEndpoint> LongformUploadEndpoint::create() {
    return make<LongformUploadEndpoint>();
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::initiateUpload(std::int64_t totalBytes,
                                                                        Completion completion) {
    return sendForUpload(Method::POST, uploadsPath,
                         {{"totalBytes", totalBytes}, {"mediaType", "video/mp4"}},
                         std::move(completion));
}

std::shared_ptr<EndpointRequest>
LongformUploadEndpoint::uploadSegment(const std::string& mediaId, Data data,
                                      std::int64_t segmentIndex,
                                      std::function<void(std::optional<Error>)> completion) {
    detail::requireCompletion(completion);
    setPath(uploadPath(mediaId));
    setParameters({{"segmentIndex", segmentIndex}});
    setParameterEncoding(ParameterEncoding(encodeForSegment));
    setMethod(Method::PUT);
    return upload(std::make_shared<KLEmptyParser>(), std::move(data),
                  detail::errorOnly(std::move(completion)));
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::finalizeUpload(const std::string& mediaId,
                                                                        Completion completion) {
    return sendForUpload(Method::POST, uploadPath(mediaId), {}, std::move(completion));
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::checkStatus(const std::string& mediaId,
                                                                     Completion completion) {
    return sendForUpload(Method::GET, uploadPath(mediaId) + "/status", {}, std::move(completion));
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::sendForUpload(Method method,
                                                                       std::string path,
                                                                       Parameters parameters,
                                                                       Completion completion) {
    detail::requireCompletion(completion);
    setPath(std::move(path));
    setParameters(std::move(parameters));
    setMethod(method);
    setParameterEncoding(ParameterEncoding::URL);
    return request(
        std::make_shared<KLVideoUploadParser>(),
        detail::firstItem([completion = std::move(completion)](
                              std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error) {
            completeUpload(std::move(upload), std::move(error), completion);
        }));
}

} // namespace KeloAPI
