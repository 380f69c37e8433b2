#include <KeloAPI/api/Api.hpp>
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

LongformUploadEndpoint::~LongformUploadEndpoint() = default;

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
                  [completion = std::move(completion)](
                      const std::vector<std::shared_ptr<KLEmpty>>&, const std::optional<Metadata>&,
                      const Timeline&,
                      std::optional<Error> error) { completion(std::move(error)); });
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
    return request(std::make_shared<KLVideoUploadParser>(),
                   [completion = std::move(completion)](
                       const std::vector<std::shared_ptr<KLVideoUpload>>& uploads,
                       const std::optional<Metadata>&, const Timeline&,
                       std::optional<Error> error) {
                       detail::completeUpload(uploads, std::move(error), completion);
                   });
}

namespace detail {

void completeUpload(const std::vector<std::shared_ptr<KLVideoUpload>>& uploads,
                    std::optional<Error> error,
                    const LongformUploadEndpoint::Completion& completion) {
    if (uploads.empty()) {
        completion(nullptr, std::move(error));
    } else {
        completion(uploads.front(), std::nullopt);
    }
}

} // namespace detail

} // namespace KeloAPI
