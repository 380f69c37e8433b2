#include "commands/Commands.hpp"
#include "DownloadBars.hpp"
#include "Explain.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"
#include "Terminal.hpp"
#include "VideoCache.hpp"
#include "VideoOffers.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/files/FileQueue.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace KeloHost {

namespace {

using namespace KeloAPI;

/// How many posts are read at a time.
constexpr std::size_t readers = 4;

struct DownloadArguments {
    /// POST or POST:PRIORITY.
    std::vector<std::string> posts;
    std::optional<double> bitrate;
    std::string priority = "normal";
    /// Empty for the cache.
    std::string directory;
};

struct Wish {
    std::string postId;
    QueuePriority priority = QueuePriority::Normal;
    /// Null before the post has been read, and when it cannot be fetched.
    std::shared_ptr<FileEndpoint> file;
};

QueuePriority priorityOf(const std::string& name) {
    for (const auto priority : {QueuePriority::Low, QueuePriority::Normal}) {
        if (name == nameOf(priority)) {
            return priority;
        }
    }
    return QueuePriority::High;
}

/// A post that is named twice is wanted once, as the last one says.
std::vector<Wish> wishesIn(const DownloadArguments& arguments) {
    std::vector<Wish> wishes;
    for (const std::string& text : arguments.posts) {
        const auto colon = text.find(':');
        Wish wish{
            text.substr(0, colon),
            priorityOf(colon == std::string::npos ? arguments.priority : text.substr(colon + 1)),
            nullptr};
        const auto same = std::find_if(wishes.begin(), wishes.end(), [&](const Wish& other) {
            return other.postId == wish.postId;
        });
        if (same == wishes.end()) {
            wishes.push_back(std::move(wish));
        } else {
            *same = std::move(wish);
        }
    }
    return wishes;
}

/// Reads the posts, chooses a file of each and has the queue fetch what is not there yet.
class Downloads : public std::enable_shared_from_this<Downloads> {
public:
    Downloads(std::shared_ptr<Host> host, const DownloadArguments& arguments)
        : _host(std::move(host))
        , _bitrate(arguments.bitrate)
        , _wishes(wishesIn(arguments))
        , _open(_wishes.size()) {
        if (!arguments.directory.empty()) {
            const auto path = std::filesystem::absolute(arguments.directory);
            VideoCache::manager()->setDocumentsDirectory(path.string() + "/");
        }
    }

    void start() {
        VideoCache::directory(); // nothing is asked for when there is no place
        for (std::size_t i = 0; i < readers; ++i) {
            readNext();
        }
    }

private:
    void readNext() {
        if (_next == _wishes.size()) {
            return;
        }
        const std::size_t index = _next++;
        const std::string& postId = _wishes[index].postId;
        const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
        endpoint->setPath("posts/" + postId);
        endpoint->request(std::make_shared<VideoOffersParser>(postId),
                          [self = shared_from_this(), index](
                              const std::vector<std::shared_ptr<KLVideoUrlBitrateSettings>>& offers,
                              const std::optional<Metadata>&, const Timeline&,
                              const std::optional<Error>& error) {
                              if (!error || !self->_host->hearsAgain(*error)) {
                                  self->received(self->_wishes[index], offers, error);
                              }
                          });
    }

    void received(Wish& wish, const std::vector<std::shared_ptr<KLVideoUrlBitrateSettings>>& offers,
                  const std::optional<Error>& error) {
        if (error) {
            failed(wish, explained(*error, _host->options().host));
        } else {
            choose(wish, offers.empty() ? nullptr : chosenOffer(*offers.front(), _bitrate));
        }
        readNext();
        if (++_read == _wishes.size()) {
            fetchAll();
        }
    }

    void choose(Wish& wish, const std::shared_ptr<KLVideoUrlBitrateSetting>& offer) {
        if (offer == nullptr) {
            failed(wish, {ExitCode::Failed, "no MP4 file is offered"});
        } else if (!hasFileName(*offer)) {
            failed(wish, {ExitCode::Failed, "the file that is offered has no name"});
        } else {
            wish.file =
                FileEndpoint::create(offer->remoteUrl().absoluteString(), VideoCache::manager());
        }
    }

    void fetchAll() {
        // The queue begins with the first file that it is given.
        std::stable_sort(_wishes.begin(), _wishes.end(),
                         [](const Wish& a, const Wish& b) { return a.priority > b.priority; });
        for (const Wish& wish : _wishes) {
            if (wish.file != nullptr) {
                fetch(wish);
            }
        }
        endWhenDone();
    }

    void fetch(const Wish& wish) {
        const bool cached = wish.file->localUrl().has_value();
        _bars.add(*wish.file, {wish.postId, wish.priority});
        wish.file->setDownloadProgressHandler(
            [weak = weak_from_this(), file = wish.file.get()](std::int64_t, std::int64_t received,
                                                              std::int64_t expected) {
                if (const auto self = weak.lock()) {
                    self->_bars.progress(*file, received, expected);
                    self->_bars.show(self->_queue->queuedFiles(), false);
                }
            });
        _queue->download(wish.file, wish.file->documentsFile().value(), wish.priority,
                         [self = shared_from_this(), &wish, cached](const auto& result) {
                             self->ended(wish, result, cached);
                         });
    }

    void ended(const Wish& wish, const FileDownloadResult& result, bool cached) {
        if (result.error() != nullptr) {
            const auto url = URL::parse(wish.file->path());
            failed(wish, explained(*result.error(), url ? hostIn(*url) : ""));
        } else {
            _bars.clear();
            const std::string path = wish.file->localUrl()->filePath().value_or("");
            std::error_code ignored;
            const auto bytes = std::filesystem::file_size(path, ignored);
            _host->output().downloaded({wish.postId, path, ignored ? 0 : bytes, cached});
            --_open;
        }
        if (!cached) {
            _bars.show(_queue->queuedFiles(), true);
            endWhenDone();
        }
    }

    static std::string hostIn(const URL& url) {
        return url.host() + (url.port() ? ":" + std::to_string(*url.port()) : "");
    }

    void failed(const Wish& wish, const Failure& failure) {
        _bars.clear();
        Terminal::say("kelo: post " + wish.postId + ": " + failure.what());
        _worst = std::max(_worst, failure.code());
        --_open;
    }

    void endWhenDone() {
        if (_open > 0) {
            return;
        }
        _bars.clear();
        if (_worst == ExitCode::Success) {
            _host->end();
        } else {
            _host->end(Failure(_worst, ""));
        }
    }

    const std::shared_ptr<Host> _host;
    const std::optional<double> _bitrate;
    const std::shared_ptr<FileQueue> _queue = FileQueue::withKey("videos");
    DownloadBars _bars;
    std::vector<Wish> _wishes;
    /// Wishes that have neither come true nor failed.
    std::size_t _open;
    std::size_t _next = 0;
    std::size_t _read = 0;
    ExitCode _worst = ExitCode::Success;
};

std::string checkPost(const std::string& text) {
    const auto colon = text.find(':');
    if (colon != std::string::npos) {
        const std::string priority = text.substr(colon + 1);
        if (priority != nameOf(priorityOf(priority))) {
            return "'" + priority + "' is none of low, normal and high";
        }
    }
    return checkIdentifier(text.substr(0, colon));
}

} // namespace

Command addDownload(CLI::App& app) {
    auto* command = app.add_subcommand("download", "Download the videos of posts into the cache");
    const auto arguments = std::make_shared<DownloadArguments>();
    command
        ->add_option("POST", arguments->posts,
                     "The posts' identifiers; POST:PRIORITY gives one a priority of its own")
        ->required()
        ->type_name("")
        ->check(checkPost);
    command
        ->add_option("--bitrate", arguments->bitrate,
                     "Bitrate of the connection, which the files are chosen for; the best one "
                     "is taken otherwise")
        ->type_name("RATE")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--priority", arguments->priority, "low, normal or high: what comes first")
        ->type_name("PRIORITY")
        ->capture_default_str()
        ->check(CLI::IsMember({"low", "normal", "high"}));
    command->add_option("--directory", arguments->directory, "Keep them there, not in the cache")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory);
    return {command, [arguments](const std::shared_ptr<Host>& host) {
                try {
                    std::make_shared<Downloads>(host, *arguments)->start();
                } catch (const Failure& failure) {
                    host->end(failure);
                }
            }};
}

} // namespace KeloHost
