#pragma once

#include "support/MainLoop.hpp"
#include "support/RegistrySession.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/files/FileQueue.hpp>

#include <gtest/gtest.h>

#include <future>
#include <tuple>

namespace KeloAPI::testing {

/// A test with a queue over a transport that answers when the test says so. Files go by names such
/// as "a"; the transport is asked for https://media.example/v/a.
class FileQueueTest : public RegistrySessionTest {
protected:
    FileQueueTest() { manager->setDocumentsDirectory(folder.path() + "/"); }
    void TearDown() override {
        queue->kill();
        manager->kill();
        settle();
        RegistrySessionTest::TearDown();
    }

    std::shared_ptr<FileEndpoint> file(const std::string& name) const {
        return FileEndpoint::create("https://media.example/v/" + name, manager);
    }
    URL place(const std::string& name) const { return URL::fileURL(folder.path(name)); }

    /// Requests a file, and waits until the request has been entered.
    void request(const std::string& name, QueuePriority priority = QueuePriority::Normal) {
        request(file(name), place(name), priority);
    }
    void request(const std::shared_ptr<FileEndpoint>& endpoint, const URL& to,
                 QueuePriority priority) {
        queue->download(endpoint, to, priority, [this, endpoint](const FileDownloadResult& result) {
            answers.push_back(nameOf(*endpoint) + (result.success() ? "" : " failed"));
        });
        settle();
    }

    /// Waits until the queue's thread has done what it was given.
    void settle() const {
        std::promise<void> reached;
        const_cast<SerialQueue&>(queue->downloadQueue()).async([&] { reached.set_value(); });
        reached.get_future().wait();
    }

    /// Answers the request that was sent as the `index`th, and waits for what the queue makes of
    /// it, for a while: that may be nothing to see.
    void finish(std::size_t index, const fakes::ScriptedAnswer& answer = {.body = "video"}) {
        const auto state = [this] { return std::tuple(order(), sent(), answers); };
        const auto before = state();
        transport->answerRequest(index, answer);
        runUntil([&] { return state() != before; }, std::chrono::milliseconds(300));
        runFor(std::chrono::milliseconds(20));
    }

    /// The names of the queued files, in their order.
    std::string order() const {
        std::string names;
        for (const auto& endpoint : queue->queuedFiles()) {
            names += (names.empty() ? "" : " ") + nameOf(*endpoint);
        }
        return names;
    }
    /// The names of the files that were asked of the server, in their order.
    std::string sent() const {
        std::string names;
        for (const URLRequest& request : transport->requests()) {
            const std::string url = request.url->absoluteString();
            names += (names.empty() ? "" : " ") + url.substr(url.rfind('/') + 1);
        }
        return names;
    }

    static std::string nameOf(const FileEndpoint& endpoint) {
        return endpoint.path().substr(endpoint.path().rfind('/') + 1);
    }

    TemporaryFolder folder;
    std::shared_ptr<FileManager> manager = FileManager::sharedGroupManager("/file-queue/");
    std::shared_ptr<FileQueue> queue = FileQueue::withKey("test");
    std::vector<std::string> answers;
};

} // namespace KeloAPI::testing
