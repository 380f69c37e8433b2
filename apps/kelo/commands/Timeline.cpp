#include "commands/Commands.hpp"
#include "FeedPost.hpp"
#include "Host.hpp"
#include "Output.hpp"
#include "Progress.hpp"

#include <KeloAPI/endpoints/TimelineEndpoint.hpp>

#include <CLI/CLI.hpp>

#include <limits>
#include <string>
#include <utility>

namespace KeloHost {

namespace {

using namespace KeloAPI;

struct TimelineArguments {
    std::string path;
    std::int64_t pages = 1;
    bool all = false;
    /// 0 keeps the library's own page size.
    std::int64_t size = 0;
    bool details = false;

    std::int64_t mostPages() const {
        return all ? std::numeric_limits<std::int64_t>::max() : pages;
    }
};

/// Reads page after page of one feed and prints each as it comes.
class Reader : public std::enable_shared_from_this<Reader> {
public:
    Reader(std::shared_ptr<Host> host, TimelineArguments arguments)
        : _host(std::move(host))
        , _arguments(std::move(arguments))
        , _progress(_arguments.mostPages() > 1) {}

    void start() {
        fetch(pageWith(_arguments.size > 0 ? Parameters{{"size", _arguments.size}} : Parameters()));
    }

private:
    using Posts = std::vector<std::shared_ptr<FeedPost>>;

    /// The endpoint's own `fetch` would read posts and no more of a record; it is used here for the
    /// path and the parameters of a timeline.
    void fetch(const std::shared_ptr<TimelineEndpoint>& page) {
        _progress.show(std::to_string(_pages) + " pages, " + std::to_string(_posts) + " posts …");
        page->request(
            std::make_shared<FeedPostParser>(),
            [self = shared_from_this()](const Posts& posts, const std::optional<Metadata>& metadata,
                                        const Timeline&, const std::optional<Error>& error) {
                self->_progress.clear();
                if (error) {
                    self->_host->fail(*error);
                } else {
                    self->received(posts, metadata);
                }
            });
    }

    void received(const Posts& posts, const std::optional<Metadata>& metadata) {
        if (_pages == 0) {
            showChannel(posts);
        }
        _host->output().posts(posts, _arguments.details);
        _posts += posts.size();
        ++_pages;
        const auto next =
            metadata ? metadata->nextPageParameters(metadata->pageSize()) : std::nullopt;
        if (next && _pages < _arguments.mostPages()) {
            fetch(pageWith(*next));
            return;
        }
        _host->output().endOfPosts(_posts, next.has_value());
        _host->end();
    }

    std::shared_ptr<TimelineEndpoint> pageWith(const Parameters& paging) const {
        auto endpoint = TimelineEndpoint::create(_arguments.path);
        Parameters parameters = endpoint->parameters();
        for (const auto& [name, value] : paging) {
            parameters.insert_or_assign(name, value);
        }
        endpoint->setParameters(std::move(parameters));
        return endpoint;
    }

    /// The posts of a channel's feed say which channel it is.
    void showChannel(const Posts& posts) {
        if (_arguments.path.starts_with("channels/") && !posts.empty() && posts.front()->channel) {
            _host->output().feedName(*posts.front()->channel);
        }
    }

    const std::shared_ptr<Host> _host;
    const TimelineArguments _arguments;
    Progress _progress;
    std::int64_t _pages = 0;
    std::size_t _posts = 0;
};

/// The library takes a path that holds "http" for a URL; the session key must not go there.
std::string checkPath(const std::string& path) {
    if (path.empty()) {
        return "the feed's path is empty";
    }
    return path.find("http") == std::string::npos
               ? ""
               : "'" + path + "' is a URL; give a feed's path, as in popular or users/1001";
}

} // namespace

Command addTimeline(CLI::App& app) {
    auto* command = app.add_subcommand("timeline", "Show the posts of a feed");
    const auto arguments = std::make_shared<TimelineArguments>();
    command
        ->add_option("PATH", arguments->path,
                     "The feed: home, popular, users/1001, channels/1, tags/cats, ...")
        ->required()
        ->type_name("")
        ->check(checkPath);
    auto* pages = command->add_option("--pages", arguments->pages, "How many pages to read")
                      ->type_name("N")
                      ->check(CLI::Range(1, 1'000'000))
                      ->capture_default_str();
    command->add_flag("--all", arguments->all, "Read on to the feed's end")->excludes(pages);
    command->add_option("--size", arguments->size, "Posts in a page (5)")
        ->type_name("N")
        ->check(CLI::Range(1, 1000));
    command->add_flag("--details", arguments->details,
                      "Show bylines, channels, venues, music, tags and links, too");
    return {command, [arguments](const std::shared_ptr<Host>& host) {
                std::make_shared<Reader>(host, *arguments)->start();
            }};
}

} // namespace KeloHost
