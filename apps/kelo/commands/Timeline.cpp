#include "commands/Commands.hpp"
#include "Host.hpp"
#include "Output.hpp"
#include "Progress.hpp"

#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <CLI/CLI.hpp>

#include <limits>
#include <string>
#include <utility>

namespace KeloHost {

namespace {

using namespace KeloAPI;

struct Arguments {
    std::string path;
    std::int64_t pages = 1;
    bool all = false;
    /// 0 keeps the library's own page size.
    std::int64_t size = 0;

    std::int64_t mostPages() const {
        return all ? std::numeric_limits<std::int64_t>::max() : pages;
    }
};

/// Reads page after page of one feed and prints each as it comes.
class Reader : public std::enable_shared_from_this<Reader> {
public:
    Reader(std::shared_ptr<Host> host, Arguments arguments)
        : _host(std::move(host))
        , _arguments(std::move(arguments))
        , _progress(_arguments.mostPages() > 1) {}

    void start() {
        const auto endpoint = TimelineEndpoint::create(_arguments.path);
        if (_arguments.size > 0) {
            Parameters parameters = endpoint->parameters();
            parameters["size"] = _arguments.size;
            endpoint->setParameters(std::move(parameters));
        }
        fetch(endpoint);
    }

private:
    void fetch(const std::shared_ptr<TimelineEndpoint>& page) {
        _progress.show(std::to_string(_pages) + " pages, " + std::to_string(_posts) + " posts …");
        page->fetch([self = shared_from_this()](const TimelineResult& result) {
            self->_progress.clear();
            if (const auto* success = result.success()) {
                self->received(*success);
            } else {
                self->_host->fail(*result.error());
            }
        });
    }

    void received(const TimelineSuccess& page) {
        _host->output().posts(page.posts);
        _posts += page.posts.size();
        ++_pages;
        if (page.nextPage != nullptr && _pages < _arguments.mostPages()) {
            fetch(page.nextPage);
            return;
        }
        _host->output().endOfPosts(_posts, page.nextPage != nullptr);
        _host->end();
    }

    const std::shared_ptr<Host> _host;
    const Arguments _arguments;
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
    const auto arguments = std::make_shared<Arguments>();
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
    return {command, [arguments](const std::shared_ptr<Host>& host) {
                std::make_shared<Reader>(host, *arguments)->start();
            }};
}

} // namespace KeloHost
