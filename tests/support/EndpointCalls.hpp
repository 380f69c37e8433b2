#pragma once

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// Hears how a call ended.
using Note = std::function<void(const std::optional<Error>&)>;
/// Sends a call, and gives its handle where it has one.
using SendCall = std::function<std::shared_ptr<EndpointRequest>(const Note&)>;

/// A completion that has a result.
inline auto notingResult(const Note& note) {
    return [note](const auto& result) {
        EXPECT_NE(result.success() ? true : false, result.error() != nullptr);
        note(result.error() ? std::optional(*result.error()) : std::nullopt);
    };
}
/// A completion that has its value, or its error in the place of it.
inline auto notingValue(const Note& note) {
    return [note](const auto& value, const std::optional<Error>& error) {
        EXPECT_EQ(value == std::decay_t<decltype(value)>(), error.has_value());
        note(error);
    };
}

/// Every call of an endpoint with a completion, by its name. The actions are on the post that
/// `post` is when they are sent.
inline std::map<std::string, SendCall> endpointCalls(std::shared_ptr<KLWatchPost>& post,
                                                     const std::string& longformId) {
    const auto withoutHandle = [](const std::function<void(const Note&)>& send) {
        return [send](const Note& note) {
            send(note);
            return nullptr;
        };
    };
    std::map<std::string, SendCall> calls;
    for (const bool on : {true, false}) {
        const std::string un = on ? "" : "un";
        calls[un + "like"] = withoutHandle([on, &post](const Note& note) {
            LikeActionEndpoint::create(post)->toggle(on, notingResult(note));
        });
        calls[un + "rekelo"] = withoutHandle([on, &post](const Note& note) {
            RekeloActionEndpoint::create(post)->toggle(on, notingResult(note));
        });
        calls[un + "follow"] = withoutHandle([on](const Note& note) {
            UserEndpoint::create("1002")->setFollowingOnTwitter(on, notingResult(note));
        });
    }
    calls["user feedback"] = withoutHandle([](const Note& note) {
        RecommendationsEndpoint::create()->addUserFeedback("1003", RecommendationBoost::Neutral,
                                                           notingResult(note));
    });
    calls["post feedback"] = withoutHandle([&post](const Note& note) {
        RecommendationsEndpoint::create()->addPostFeedback(
            post->postId.value(), RecommendationBoost::Negative, notingResult(note));
    });
    calls["me"] =
        withoutHandle([](const Note& note) { MeEndpoint::create()->get(notingResult(note)); });
    calls["timeline"] = withoutHandle(
        [](const Note& note) { TimelineEndpoint::create("all")->fetch(notingResult(note)); });
    calls["sounds"] = [](const Note& note) {
        return SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
            ->fetchSounds(notingValue(note));
    };
    const auto views = LongformViewsEndpoint::create(longformId);
    calls["views"] = [views](const Note& note) { return views->fetchViews(notingValue(note)); };
    calls["view"] = [views](const Note& note) { return views->submitView(note); };
    const auto upload = LongformUploadEndpoint::create();
    calls["initiate"] = [upload](const Note& note) {
        return upload->initiateUpload(1, notingValue(note));
    };
    calls["segment"] = [upload](const Note& note) {
        return upload->uploadSegment("1", Data("a"), 0, note);
    };
    calls["finalize"] = [upload](const Note& note) {
        return upload->finalizeUpload("1", notingValue(note));
    };
    calls["status"] = [upload](const Note& note) {
        return upload->checkStatus("1", notingValue(note));
    };
    return calls;
}

} // namespace KeloAPI::testing
