#pragma once

#include "support/FixedRequest.hpp"
#include "support/HeardAnswers.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/fakes/Cassette.hpp>
#include <KeloAPI/fakes/PlaybackTransport.hpp>
#include <KeloAPI/fakes/RecordingTransport.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace KeloAPI::testing {

/// A test that records what a scripted transport responds, and plays it back.
class CassetteTest : public ::testing::Test {
protected:
    static FixedRequest get(std::string_view url) { return FixedRequest(url); }
    static FixedRequest post(std::string_view url, std::string body) {
        FixedRequest request(url);
        request.request.method = Method::POST;
        request.request.body = Data(std::move(body));
        return request;
    }

    /// Sends a request over a manager and waits for what comes of it.
    static HeardAnswer send(Manager& manager, const FixedRequest& request) {
        HeardAnswers answers;
        answers.listenTo(manager.request(request));
        EXPECT_TRUE(answers.waitFor(1));
        return answers.empty() ? HeardAnswer() : answers.front();
    }

    HeardAnswer record(const FixedRequest& request, fakes::ScriptedAnswer answer) {
        service->answer(std::move(answer));
        return send(recorder, request);
    }

    /// The cassette's text as it comes out of a reader that has read it.
    std::string readAndWritten(const std::string& text) {
        const auto read = fakes::Cassette::parse(text);
        return read ? read.value()->text() : read.error().description();
    }

    std::shared_ptr<fakes::ScriptedTransport> service =
        std::make_shared<fakes::ScriptedTransport>();
    std::shared_ptr<fakes::Cassette> cassette = std::make_shared<fakes::Cassette>(1000);
    Manager recorder{std::make_shared<fakes::RecordingTransport>(service, cassette)};
    TemporaryFolder folder;
};

} // namespace KeloAPI::testing
