#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/internal/completeUpload.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

#include <utility>

namespace KeloAPI {

namespace {

std::string uploadsPath() {
    return "/upload/longform-videos";
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
    detail::requireCompletion(completion);
    setPath(uploadsPath());
    setParameters({{"totalBytes", totalBytes}, {"mediaType", "video/mp4"}});
    setMethod(Method::POST);
    return sendForUpload(std::move(completion));
}

std::shared_ptr<EndpointRequest>
LongformUploadEndpoint::uploadSegment(const std::string& mediaId, Data data,
                                      std::int64_t segmentIndex,
                                      std::function<void(std::optional<Error>)> completion) {
    detail::requireCompletion(completion);
    setPath(uploadsPath() + "/" + mediaId);
    setParameters({{"segmentIndex", segmentIndex}});
    setParameterEncoding(ParameterEncoding(encodeForSegment));
    setMethod(Method::PUT);
    return upload(std::make_shared<KLEmptyParser>(), std::move(data),
                  detail::errorOnly(std::move(completion)));
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::finalizeUpload(const std::string& mediaId,
                                                                        Completion completion) {
    detail::requireCompletion(completion);
    setPath(uploadsPath() + "/" + mediaId);
    setParameters({});
    setMethod(Method::POST);
    return sendForUpload(std::move(completion));
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::checkStatus(const std::string& mediaId,
                                                                     Completion completion) {
    detail::requireCompletion(completion);
    setPath(uploadsPath() + "/" + mediaId + "/status");
    setParameters({});
    setMethod(Method::GET);
    return sendForUpload(std::move(completion));
}

std::shared_ptr<EndpointRequest> LongformUploadEndpoint::sendForUpload(Completion completion) {
    setParameterEncoding(ParameterEncoding::URL);
    return request(
        std::make_shared<KLVideoUploadParser>(),
        detail::firstItem([completion = std::move(completion)](
                              std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error) {
            completeUpload(std::move(upload), std::move(error), completion);
        }));
}

} // namespace KeloAPI
