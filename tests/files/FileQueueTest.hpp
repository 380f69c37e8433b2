#pragma once

#include "support/RegistrySession.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/files/FileQueue.hpp>

#include <future>

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
        queue->download(endpoint, to, priority, noteOf(nameOf(*endpoint)));
        settle();
    }
    /// Notes an answer under this name.
    FileQueue::Completion noteOf(const std::string& name) {
        return [this, name](const FileDownloadResult& result) {
            answers.push_back(name + (result.success() ? "" : ":failed"));
        };
    }

    /// Waits until the queue's thread has done what it was given.
    void settle() const {
        std::promise<void> reached;
        const_cast<SerialQueue&>(queue->downloadQueue()).async([&] { reached.set_value(); });
        reached.get_future().wait();
    }

    /// Answers the request of a file that was sent as the `index`th, and waits for what the queue
    /// makes of it.
    void finish(std::size_t index, const fakes::ScriptedAnswer& answer = {.body = "video"}) {
        const auto requests = transport->requests();
        std::size_t place = 0;
        for (std::size_t files = 0; place < requests.size(); ++place) {
            if (requests[place].url->absoluteString() != fence && files++ == index) {
                break;
            }
        }
        transport->answerRequest(place, answer);
        passThrough();
    }

    static std::string joined(const std::vector<std::string>& names) {
        std::string text;
        for (const std::string& name : names) {
            text += (text.empty() ? "" : " ") + name;
        }
        return text;
    }
    /// The names of the queued files, in their order.
    std::string order() const {
        std::vector<std::string> names;
        for (const auto& endpoint : queue->queuedFiles()) {
            names.push_back(nameOf(*endpoint));
        }
        return joined(names);
    }
    /// The names of the files that were asked of the server, in their order.
    std::string sent() const {
        std::vector<std::string> names;
        for (const URLRequest& request : transport->requests()) {
            const std::string url = request.url->absoluteString();
            if (url != fence) {
                names.push_back(url.substr(url.rfind('/') + 1));
            }
        }
        return joined(names);
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
