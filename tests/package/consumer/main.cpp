// A host in a few lines, over a scripted transport: builds, links and runs against the library in
// each of the ways in which a project can take it in.
#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <cstdio>

int main() {
    const auto session = KeloAPI::Api::session(KeloAPI::SessionType::Authenticated);
    const auto transport = std::make_shared<KeloAPI::fakes::ScriptedTransport>();
    session->setSessionManager(std::make_shared<KeloAPI::Manager>(transport));
    transport->answer(KeloAPI::fakes::ScriptedAnswer::json(
        R"({"data": {"records": [{"postId": 7, "description": "hello"}]}})"));
    int posts = -1;
    KeloAPI::TimelineEndpoint::create("popular")->fetch([&](const KeloAPI::TimelineResult& result) {
        posts = result.success() == nullptr ? 0 : static_cast<int>(result.success()->posts.size());
    });
    KeloAPI::MainQueue::main().runUntil([&] { return posts >= 0; }, std::chrono::seconds(10));
    std::printf("%d post read\n", posts);
    return posts == 1 ? 0 : 1;
}
