// Reads a feed page by page to its end, or as many pages as are wanted.
//
//     example-paging FEED PAGES
#include "ExampleHost.hpp"

#include <cstdlib>
#include <iostream>

using namespace KeloAPI;

namespace {

using Posts = std::vector<std::shared_ptr<KLWatchPost>>;
/// Takes what was read, and the error where the feed broke off there.
using FeedCompletion = std::function<void(const Posts& posts, const std::optional<Error>& error)>;

/// Reads this page and up to `further` pages behind it. The endpoint of a page is all that has to
/// be kept to go on later: when the user has scrolled to the end of the list.
void readFeed(const std::shared_ptr<TimelineEndpoint>& page, int further, Posts posts,
              FeedCompletion completion) {
    page->fetch([further, posts = std::move(posts),
                 completion = std::move(completion)](const TimelineResult& result) mutable {
        if (const Error* error = result.error()) {
            completion(posts, *error);
            return;
        }
        const auto* read = result.success();
        posts.insert(posts.end(), read->posts.begin(), read->posts.end());
        if (further > 0 && read->nextPage) {
            readFeed(read->nextPage, further - 1, std::move(posts), std::move(completion));
        } else {
            completion(posts, {});
        }
    });
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "example-paging FEED PAGES\n";
        return 2;
    }
    ExampleHost::use();
    int exitCode = 0;
    readFeed(TimelineEndpoint::create(argv[1]),
             static_cast<int>(std::strtol(argv[2], nullptr, 10)) - 1, {},
             [&exitCode](const Posts& posts, const std::optional<Error>& error) {
                 for (const auto& post : posts) {
                     std::cout << post->caption.value_or("") << '\n';
                 }
                 if (error) {
                     std::cerr << error->localizedDescription() << '\n';
                     exitCode = 1;
                 }
                 MainQueue::main().stop();
             });
    MainQueue::main().run();
    return exitCode;
}
