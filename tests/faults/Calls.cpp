#include "Calls.hpp"

#include "support/EndpointCalls.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/model/KLRekelo.hpp>

#include <utility>

namespace KeloAPI::testing {

namespace {

/// Longer contents are nothing to compare.
constexpr std::size_t maxContent = 4096;

std::shared_ptr<KLWatchPost> knownPost() {
    auto post = std::make_shared<KLWatchPost>();
    post->postId = "123";
    post->currentUserRekelo = std::make_shared<KLRekelo>();
    post->currentUserRekelo->rekeloId = "987";
    return post;
}

/// A report of loops tells nobody how it ended but the diagnostics: here its completion is heard.
class HeardLoopsEndpoint : public LoopsEndpoint {
public:
    std::shared_ptr<Heard> heard;

    std::shared_ptr<EndpointRequest> request(TextCompletion completion) override {
        return LoopsEndpoint::request([completion = std::move(completion),
                                       heard = heard](const std::optional<std::string>& text,
                                                      const std::optional<Error>& error) {
            completion(text, error);
            heard->hear(error);
        });
    }

protected:
    explicit HeardLoopsEndpoint(Key key)
        : LoopsEndpoint(key) {}
};

void sendLoops(const std::shared_ptr<Heard>& heard) {
    const auto endpoint = Endpoint::make<HeardLoopsEndpoint>();
    endpoint->heard = heard;
    endpoint->submit(1, knownPost());
}

void sendForText(const std::shared_ptr<Heard>& heard) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath("text");
    endpoint->request([heard](const auto& text, const std::optional<Error>& error) {
        EXPECT_NE(text.has_value(), error.has_value());
        if (text && text->size() <= maxContent) {
            heard->content = *text;
        }
        heard->hear(error);
    });
}

/// Of many pieces, as TLS and HTTP/2 have them.
void sendLargeSegment(const std::shared_ptr<Heard>& heard) {
    static const Data large(std::string(std::size_t{256} << 10U, 'x'));
    LongformUploadEndpoint::create()->uploadSegment(
        "1", large, 0, [heard](const std::optional<Error>& error) { heard->hear(error); });
}

/// Looks at the file and removes it.
void hearOfFile(Heard& heard, const std::string& file, const std::optional<Error>& error) {
    EXPECT_EQ(std::filesystem::exists(file), !error) << file;
    if (!error && std::filesystem::file_size(file) <= maxContent) {
        heard.content = contentsOf(file);
    }
    std::filesystem::remove(file);
    heard.hear(error);
}

void sendForFile(const std::string& folder, const std::shared_ptr<Heard>& heard) {
    static int number = 0;
    const std::string name = std::to_string(++number) + ".mp4";
    const auto files = FileManager::sharedGroupManager("/faults/");
    files->setDocumentsDirectory(folder + "/");
    const std::string file = folder + "/" + name;
    FileEndpoint::create("v/" + name, files)
        ->download(URL::fileURL(file), [heard, file](const FileDownloadResult& result) {
            hearOfFile(*heard, file,
                       result.error() ? std::optional(*result.error()) : std::nullopt);
        });
}

CallKind kindOf(const std::string& name) {
    for (const char* reading : {"me", "timeline", "sounds", "views", "status"}) {
        if (name == reading) {
            return CallKind::Read;
        }
    }
    return name == "segment"                        ? CallKind::Upload
           : name == "unlike" || name == "unrekelo" ? CallKind::Undo
                                                    : CallKind::Act;
}

} // namespace

void Heard::hear(const std::optional<Error>& completed) {
    ++times;
    isInItsPlace = isInItsPlace && !isSending && std::this_thread::get_id() == mainThread;
    error = completed;
}

std::vector<Call> allCalls(const std::string& folder) {
    auto post = knownPost();
    std::vector<Call> calls;
    for (const auto& [name, unused] : endpointCalls(post, "1")) {
        calls.push_back({name, kindOf(name), [name = name](const std::shared_ptr<Heard>& heard) {
                             // An endpoint has one call at a time: each call has its own.
                             static auto kept = knownPost();
                             endpointCalls(kept, "1").at(name)(
                                 [heard](const auto& error) { heard->hear(error); });
                         }});
    }
    calls.push_back({"large segment", CallKind::Upload, &sendLargeSegment});
    calls.push_back({"text", CallKind::Text, &sendForText});
    calls.push_back({"loops", CallKind::Loops, &sendLoops});
    calls.push_back({"file", CallKind::File, [folder](const std::shared_ptr<Heard>& heard) {
                         sendForFile(folder, heard);
                     }});
    return calls;
}

} // namespace KeloAPI::testing
