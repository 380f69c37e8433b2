#pragma once

#include "MainLoop.hpp"

#include <KeloAPI/http/Request.hpp>

#include <memory>
#include <optional>

namespace KeloAPI::testing {

/// Runs the main queue until the request has ended, and gives the error that it ended with, if any.
inline std::optional<Error> errorOf(const std::shared_ptr<Request>& request,
                                    std::chrono::milliseconds limit = timeLimit) {
    struct End {
        bool came = false;
        std::optional<Error> error;
    };
    const auto end = std::make_shared<End>();
    request->response([end](const ResponseContent& content, Timeline) {
        return [end, error = content.error] { *end = {true, error}; };
    });
    if (!runUntil([&] { return end->came; }, limit)) {
        return Error("the request does not end", 0);
    }
    return end->error;
}

} // namespace KeloAPI::testing
