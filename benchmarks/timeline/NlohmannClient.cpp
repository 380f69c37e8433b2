#include "benchmarks/timeline/NlohmannClient.hpp"

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace KeloBenchmark {

namespace {

using Json = nlohmann::json;
using KeloAPI::Number;

std::optional<std::string> text(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
        return std::nullopt;
    }
    return found->get<std::string>();
}

std::optional<std::int64_t> integer(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number()) {
        return std::nullopt;
    }
    return found->get<std::int64_t>();
}

std::shared_ptr<KeloAPI::KLWatchUser> user(const Json& record) {
    const auto nested = record.find("user");
    const Json& json = nested != record.end() && nested->is_object() ? *nested : record;
    auto user = std::make_shared<KeloAPI::KLWatchUser>();
    user->username = json.contains("username") ? text(json, "username") : "";
    const auto count = json.find("loopCount");
    const auto velocity = json.find("loopVelocity");
    if (count != json.end() && count->is_number() && velocity != json.end() &&
        velocity->is_number()) {
        user->loopData = std::make_shared<KeloAPI::LoopData>(Number::of(count->get<std::int64_t>()),
                                                             Number::of(velocity->get<double>()));
    }
    return user;
}

std::shared_ptr<KeloAPI::KLWatchPost> post(const Json& record) {
    auto post = std::make_shared<KeloAPI::KLWatchPost>();
    const Json& postId = record.at("postId");
    post->postId = postId.is_string() ? postId.get<std::string>() : postId.dump();
    post->caption = record.contains("description") ? text(record, "description") : "";
    if (const auto created = text(record, "created")) {
        post->created = KeloAPI::DateFormatter().date(*created);
    }
    post->thumbnailUrl = record.contains("thumbnailUrl") ? text(record, "thumbnailUrl") : "";
    if (const auto liked = record.find("liked"); liked != record.end() && liked->is_boolean()) {
        post->liked = liked->get<bool>();
    }
    if (const auto repostId = integer(record, "myRepostId")) {
        post->currentUserRekelo = std::make_shared<KeloAPI::KLRekelo>();
        post->currentUserRekelo->rekeloId = std::to_string(*repostId);
    }
    if (const auto list = record.find("videoUrls"); list != record.end() && list->is_array()) {
        for (const Json& rendition : *list) {
            if (integer(rendition, "rate") == 0) {
                post->videoUrl = text(rendition, "videoUrl");
                break;
            }
        }
    }
    post->user = user(record);
    return post;
}

} // namespace

Page readWithNlohmann(const std::string& body) {
    const Json root = Json::parse(body);
    if (const auto error = text(root, "error"); error && !error->empty()) {
        throw std::runtime_error(*error);
    }
    const Json& data = root.at("data");
    Page page;
    page.count = integer(data, "count").value_or(0);
    page.nextPage = integer(data, "nextPage");
    page.previousPage = integer(data, "previousPage");
    page.size = integer(data, "size").value_or(0);
    page.nextAfter = integer(data, "nextAfter").value_or(0);
    page.title = text(data, "title");
    page.anchor = text(data, "anchor");
    if (const auto anchor = integer(data, "anchor")) {
        page.anchor = std::to_string(*anchor);
    }
    page.backAnchor = text(data, "backAnchor");
    page.displayCount = integer(data, "displayCount").value_or(0);
    const Json& records = data.at("records");
    page.posts.reserve(records.size());
    for (const Json& record : records) {
        page.posts.push_back(post(record));
    }
    return page;
}

} // namespace KeloBenchmark
