#pragma once

#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>

#include <memory>
#include <optional>
#include <utility>

namespace KeloAPI {

/// Completes with the upload, and with the error only where there is none.
inline void completeUpload(std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error,
                           const LongformUploadEndpoint::Completion& completion) {
    if (upload) {
        error.reset();
    }
    completion(std::move(upload), std::move(error));
}

} // namespace KeloAPI
