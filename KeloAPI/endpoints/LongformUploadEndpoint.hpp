#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>

namespace KeloAPI {

/// Uploads a long-form video in segments. The host drives it: it initiates an upload session,
/// sends segments in any order, of any size and with the indices it likes, finalizes the session,
/// and asks for the status again after `checkAfterSeconds` until the state is final. The library
/// keeps no timer and retries nothing by itself, with two exceptions: a segment whose kept
/// connection turns out to be dead goes over a new one, and a call that is released after signing
/// in again is sent once more, a segment without its bytes, so that the host must send that again.
///
/// Media ids go into the path as they are: one that holds "http" makes an invalid URL, and the
/// call ends with an error. Completions must not be empty; they run on the main queue. Segments of
/// one upload may be under way together where each has an endpoint of its own.
class KELO_API LongformUploadEndpoint : public Endpoint {
public:
    /// The upload as the service describes it, or the error in its place; null without an error
    /// where the response held nothing.
    using Completion =
        std::function<void(std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error)>;

    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<LongformUploadEndpoint> create();

    /// POST /upload/longform-videos, with "totalBytes" and the media type "video/mp4" in the query.
    std::shared_ptr<EndpointRequest> initiateUpload(std::int64_t totalBytes, Completion completion);

    /// PUT /upload/longform-videos/ and the id, with "segmentIndex" in the query and the bytes as
    /// the body, which are not copied. The handle's progress counts bytes sent.
    std::shared_ptr<EndpointRequest>
    uploadSegment(const std::string& mediaId, Data data, std::int64_t segmentIndex,
                  std::function<void(std::optional<Error> error)> completion);

    /// POST /upload/longform-videos/ and the id: no segments after this.
    std::shared_ptr<EndpointRequest> finalizeUpload(const std::string& mediaId,
                                                    Completion completion);

    /// GET /upload/longform-videos/, the id and /status.
    std::shared_ptr<EndpointRequest> checkStatus(const std::string& mediaId, Completion completion);

protected:
    explicit LongformUploadEndpoint(Key key); ///< For derived classes, through `make`.

private:
    std::shared_ptr<EndpointRequest> sendForUpload(Method method, std::string path,
                                                   Parameters parameters, Completion completion);
};

} // namespace KeloAPI
