// A call that the library does not know, as a class of the host's own with a model and a parser;
// and the same service asked once more without any class.
//
//     example-own-endpoint POST
#include "ExampleHost.hpp"

#include <iostream>

using namespace KeloAPI;

namespace {

/// How a post is received.
struct PostCounts {
    std::int64_t loops = 0;
    std::int64_t likes = 0;
    std::optional<std::string> channel;
};

/// Needs "loops" and "likes", each an object with a "count".
class PostCountsParser final : public JsonParser<PostCounts> {
public:
    std::shared_ptr<PostCounts> parse(const JsonObject& json) const override {
        auto counts = std::make_shared<PostCounts>();
        counts->loops = countUnder(json, "loops");
        counts->likes = countUnder(json, "likes");
        if (const auto channel = json["channel"].text()) {
            counts->channel = std::string(*channel);
        }
        return counts;
    }

private:
    static std::int64_t countUnder(const JsonObject& json, const char* key) {
        const auto list = json[key].object();
        const auto count = list ? (*list)["count"].integer() : std::nullopt;
        if (!count) {
            throw JsonParseError(JsonParseError::InsufficientData, key);
        }
        return *count;
    }
};

/// Reads how a post is received: GET posts/ and its id.
class PostCountsEndpoint : public Endpoint {
public:
    static std::shared_ptr<PostCountsEndpoint> create(const std::string& postId) {
        return make<PostCountsEndpoint>(postId);
    }

    /// The counts, or the error in their place.
    using Completion = std::function<void(std::shared_ptr<PostCounts>, std::optional<Error>)>;

    std::shared_ptr<EndpointRequest> fetch(Completion completion) {
        return request(std::make_shared<PostCountsParser>(),
                       [completion = std::move(completion)](
                           const std::vector<std::shared_ptr<PostCounts>>& items,
                           const std::optional<Metadata>&, const Timeline&,
                           std::optional<Error> error) {
                           completion(items.empty() ? nullptr : items.front(), std::move(error));
                       });
    }

protected:
    PostCountsEndpoint(Key key, const std::string& postId)
        : Endpoint(key, Api::session(SessionType::Authenticated)) {
        setPath("posts/" + postId);
    }
};

/// The same service without a class: any call, its response as text.
void showText(const std::string& path) {
    const auto endpoint = Endpoint::create(Api::session(SessionType::UnAuthenticated));
    endpoint->setPath(path);
    endpoint->request([](const std::optional<std::string>& text, const std::optional<Error>&) {
        std::cout << text.value_or("(nothing)") << '\n';
        MainQueue::main().stop();
    });
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "example-own-endpoint POST\n";
        return 2;
    }
    ExampleHost::use();
    int exitCode = 1;
    PostCountsEndpoint::create(argv[1])->fetch(
        [&exitCode](const std::shared_ptr<PostCounts>& counts, const std::optional<Error>& error) {
            if (error) {
                std::cerr << error->description() << '\n';
                MainQueue::main().stop();
                return;
            }
            std::cout << counts->loops << " loops, " << counts->likes << " likes\n";
            exitCode = 0;
            showText("longforms/lf-unseen/views");
        });
    MainQueue::main().run();
    return exitCode;
}
