#pragma once

#include "MainLoop.hpp"

#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/Request.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

/// What response handlers have heard of a request.
struct HeardAnswer {
    std::string body;
    std::optional<Error> error;
    std::optional<int> status;
    Timeline timeline;
    std::thread::id serializedOn;
    std::thread::id completedOn;

    bool failedWith(HTTPErrorCode code) const { return error && isHTTPError(*error, code); }
};

/// The answers to requests, in the order in which their completions ran.
class HeardAnswers : public std::vector<HeardAnswer> {
public:
    /// Attaches a handler that notes what it hears.
    std::shared_ptr<Request> listenTo(std::shared_ptr<Request> request) {
        request->response([this](const ResponseContent& content, Timeline timeline) {
            HeardAnswer heard{content.body, content.error, {}, timeline, {}, {}};
            heard.serializedOn = std::this_thread::get_id();
            if (content.response) {
                heard.status = content.response->statusCode;
            }
            return [this, heard = std::move(heard)]() mutable {
                heard.completedOn = std::this_thread::get_id();
                push_back(std::move(heard));
            };
        });
        return request;
    }

    /// Runs the main queue until there are so many.
    bool waitFor(std::size_t count) const {
        return runUntil([&] { return size() >= count; });
    }
};

} // namespace KeloAPI::testing
