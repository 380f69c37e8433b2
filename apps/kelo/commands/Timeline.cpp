#include "commands/Commands.hpp"
#include "Feed.hpp"
#include "Progress.hpp"
#include "Records.hpp"
#include "Terminal.hpp"
#include "Text.hpp"

#include <limits>

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// Reads page after page of one feed and prints each as it comes.
class TimelineReader : public std::enable_shared_from_this<TimelineReader> {
public:
    TimelineReader(HostPointer host, const Arguments& arguments)
        : _host(std::move(host))
        , _path(arguments.text("PATH"))
        , _details(arguments.has("--details"))
        , _mostPages(arguments.has("--all") ? std::numeric_limits<std::int64_t>::max()
                                            : arguments.number("--pages"))
        , _progress(_mostPages > 1) {}

    /// 0 keeps the library's own page size.
    void start(std::int64_t size) {
        fetch(pageWith(size > 0 ? Parameters{{"size", size}} : Parameters()));
    }

private:
    using Posts = std::vector<std::shared_ptr<FeedPost>>;

    /// The endpoint's own `fetch` reads only the library's posts; here the endpoint provides the
    /// path and the parameters of a timeline.
    void fetch(const std::shared_ptr<TimelineEndpoint>& page) {
        _progress.show(countText(_pages, "page") + ", " + countText(_posts, "post") + " …");
        page->request(std::make_shared<FeedPostParser>(),
                      [self = shared_from_this()](const Posts& posts,
                                                  const std::optional<Metadata>& metadata,
                                                  const auto&, const std::optional<Error>& error) {
                          self->_progress.clear();
                          self->_host->hear(error, [&] { self->received(posts, metadata); });
                      });
    }

    void received(const Posts& posts, const std::optional<Metadata>& metadata) {
        if (_pages == 0) {
            showChannel(posts);
        }
        _host->output().writeAll(posts, [this](const auto& all) { return linesOf(all, _details); });
        _posts += posts.size();
        ++_pages;
        const auto next =
            metadata ? metadata->nextPageParameters(metadata->pageSize()) : std::nullopt;
        if (next && _pages < _mostPages) {
            fetch(pageWith(*next));
            return;
        }
        if (_posts == 0) {
            _host->output().say({"This feed is empty."});
        } else if (next && !_host->output().isJson() && Terminal::showsOutput()) {
            Terminal::say("There are more posts: use --pages N or --all.");
        }
        _host->end();
    }

    std::shared_ptr<TimelineEndpoint> pageWith(const Parameters& paging) const {
        auto endpoint = TimelineEndpoint::create(_path);
        Parameters parameters = endpoint->parameters();
        for (const auto& [name, value] : paging) {
            parameters.insert_or_assign(name, value);
        }
        endpoint->setParameters(std::move(parameters));
        return endpoint;
    }

    /// The posts of a channel's feed say which channel it is.
    void showChannel(const Posts& posts) {
        if (_path.starts_with("channels/") && !posts.empty() && posts.front()->channel) {
            _host->output().say({*posts.front()->channel});
        }
    }

    const HostPointer _host;
    const std::string _path;
    const bool _details;
    const std::int64_t _mostPages;
    Progress _progress;
    std::int64_t _pages = 0;
    std::size_t _posts = 0;
};

} // namespace

void showTimeline(const HostPointer& host, const Arguments& arguments) {
    std::make_shared<TimelineReader>(host, arguments)->start(arguments.number("--size"));
}

} // namespace KeloHost
