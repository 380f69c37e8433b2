#include "CancellableFile.hpp"
#include "commands/Commands.hpp"
#include "KeptSession.hpp"
#include "Progress.hpp"
#include "Terminal.hpp"
#include "Text.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>

namespace KeloHost {

using namespace KeloAPI;

namespace {

using Offers = KLVideoUrlBitrateSettings;

/// In the order of `QueuePriority`.
constexpr std::array priorityNames = {"low", "normal", "high"};

struct Wish {
    std::string postId;
    QueuePriority priority = QueuePriority::Normal;
    /// Null before the post has been read, and when it cannot be fetched.
    std::shared_ptr<CancellableFile> file;
};

std::optional<QueuePriority> priorityOf(const std::string& name) {
    const auto* found = std::find(priorityNames.begin(), priorityNames.end(), name);
    return queuePriorityOf(found - priorityNames.begin());
}

/// A post that is named twice is downloaded once, with the last priority.
std::vector<Wish> wishesIn(const Arguments& arguments) {
    std::vector<Wish> wishes;
    std::vector<std::string> texts = arguments.texts("POST");
    if (const auto place = std::find(texts.begin(), texts.end(), "-"); place != texts.end()) {
        const auto more = linesOfInput(checkWish);
        texts.insert(texts.erase(place), more.begin(), more.end());
    }
    for (const std::string& text : texts) {
        const auto colon = text.find(':');
        Wish wish;
        wish.postId = text.substr(0, colon);
        wish.priority = priorityOf(colon == std::string::npos ? arguments.text("--priority")
                                                              : text.substr(colon + 1))
                            .value();
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

/// What a post's record offers under "videoUrls". Anything else is left out.
std::shared_ptr<Offers> offersIn(const JsonObject& json, const std::string& postId) {
    const auto offers = json["videoUrls"].objects().value_or(JsonObjectList());
    return std::make_shared<Offers>(
        KLVideoUrlBitrateSettingParser(postId).parseArray(offers, true));
}

std::shared_ptr<KLVideoUrlBitrateSetting> chosenOffer(const Offers& offers,
                                                      std::optional<double> bitrate) {
    return bitrate ? offers.settingForFormat(KLVideoFileFormat::MP4, *bitrate)
                   : offers.highestSettingForFormat(KLVideoFileFormat::MP4);
}

bool hasFileName(const KLVideoUrlBitrateSetting& offer) {
    // The part of the URL that a `FileEndpoint` takes for the name.
    const std::string url = offer.remoteUrl.absoluteString();
    const std::string last = url.substr(url.rfind('/') + 1);
    const std::string name = last.substr(0, last.find('?'));
    return !name.empty() && name != "." && name != "..";
}

/// Reads the posts, chooses a file of each and has the queue fetch what is not there yet.
class Downloads : public std::enable_shared_from_this<Downloads> {
public:
    Downloads(HostPointer host, const Arguments& arguments)
        : _host(std::move(host))
        , _wishes(wishesIn(arguments))
        , _open(_wishes.size()) {
        if (arguments.has("--bitrate")) {
            _bitrate = std::strtod(arguments.text("--bitrate").c_str(), nullptr);
        }
    }

    void start() {
        _host->loop().atInterruption([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->interrupt();
            }
        });
        for (Wish& wish : _wishes) {
            read(wish);
        }
        endWhenDone(); // standard input may hold none
    }

private:
    void read(Wish& wish) {
        const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
        endpoint->setPath("posts/" + wish.postId);
        endpoint->request(
            std::make_shared<KLClosureParser<Offers>>(
                [id = wish.postId](const JsonObject& json) { return offersIn(json, id); }),
            [self = shared_from_this(), &wish](const std::vector<std::shared_ptr<Offers>>& offers,
                                               const auto&, const auto&,
                                               const std::optional<Error>& error) {
                if (!error || !self->_host->hearsAgain(*error)) {
                    self->received(wish, offers, error);
                }
            });
    }

    void received(Wish& wish, const std::vector<std::shared_ptr<Offers>>& offers,
                  const std::optional<Error>& error) {
        if (error) {
            failed(wish, explained(*error, _host->options().host, _host->expectedPins()));
        } else {
            choose(wish, offers.empty() ? nullptr : chosenOffer(*offers.front(), _bitrate));
        }
        if (++_read == _wishes.size()) {
            fetchAll();
        }
    }

    void choose(Wish& wish, const std::shared_ptr<KLVideoUrlBitrateSetting>& offer) {
        if (offer == nullptr) {
            failed(wish, {ExitCode::Failed, "no MP4 file is offered"});
        } else if (!hasFileName(*offer)) {
            failed(wish, {ExitCode::Failed, "the offered file has no name"});
        } else {
            wish.file = Endpoint::make<CancellableFile>(
                offer->remoteUrl.absoluteString(), videoCache(), serviceAt(_host->options().host),
                [weak = weak_from_this(), id = wish.postId](std::int64_t, std::int64_t received,
                                                            std::int64_t expected) {
                    if (const auto self = weak.lock()) {
                        self->showProgress(id, received, expected);
                    }
                });
        }
    }

    void fetchAll() {
        // The queue begins with the first file that it is given.
        std::stable_sort(_wishes.begin(), _wishes.end(),
                         [](const Wish& a, const Wish& b) { return a.priority > b.priority; });
        for (Wish& wish : _wishes) {
            if (wish.file != nullptr) {
                fetch(wish);
            }
        }
        endWhenDone();
    }

    void fetch(Wish& wish) {
        const bool cached = wish.file->localUrl().has_value();
        _queue->download(wish.file, wish.file->documentsFile().value(), wish.priority,
                         [self = shared_from_this(), &wish, cached](const auto& result) {
                             self->ended(wish, result, cached);
                         });
    }

    void ended(const Wish& wish, const FileDownloadResult& result, bool cached) {
        if (_isInterrupted && result.error() != nullptr) {
            --_open;
        } else if (result.error() != nullptr) {
            const auto url = URL::parse(wish.file->path());
            failed(wish,
                   explained(*result.error(), url ? hostIn(*url) : "", _host->expectedPins()));
        } else {
            _progress.clear();
            const std::string path = wish.file->localUrl()->filePath().value_or("");
            std::error_code ignored;
            const auto bytes = std::filesystem::file_size(path, ignored);
            showDownloaded(wish, path, ignored ? 0 : bytes, cached);
            ++_kept;
            --_open;
        }
        if (!cached) {
            endWhenDone();
        }
    }

    void showDownloaded(const Wish& wish, const std::string& path, std::uint64_t bytes,
                        bool cached) {
        _host->output().write(
            {{"postId", wish.postId}, {"path", path}, {"bytes", bytes}, {"cached", cached}},
            {"post " + wish.postId + (cached ? ", already cached: " : ": ") + path + " (" +
             sizeText(bytes) + ")"});
    }

    void showProgress(const std::string& postId, std::int64_t received, std::int64_t expected) {
        if (!_isInterrupted) {
            const std::size_t place = _wishes.size() - _open + 1;
            _progress.showBytes(static_cast<double>(received), static_cast<double>(expected),
                                Progress::When::Soon,
                                ", post " + postId + " (" + std::to_string(place) + " of " +
                                    std::to_string(_wishes.size()) + ")");
        }
    }

    /// Ends when every download has ended, each of which removes what it has of its file.
    void interrupt() {
        _isInterrupted = true;
        _progress.clear();
        for (const Wish& wish : _wishes) {
            if (wish.file != nullptr) {
                wish.file->cancel();
            }
        }
        if (_read < _wishes.size()) {
            endInterrupted();
        }
    }

    void endInterrupted() {
        const std::string kept = _kept == 0 ? "nothing was kept"
                                            : "kept " + countText(_kept, "file") + " of " +
                                                  std::to_string(_wishes.size());
        _host->end(Failure(ExitCode::Interrupted, "interrupted; " + kept));
    }

    static std::string hostIn(const URL& url) {
        return url.host() + (url.port() ? ":" + std::to_string(*url.port()) : "");
    }

    void failed(const Wish& wish, const Failure& failure) {
        _progress.clear();
        Terminal::complain("post " + wish.postId + ": " + failure.what());
        _worst = std::max(_worst, failure.code());
        --_open;
    }

    void endWhenDone() {
        if (_open > 0) {
            return;
        }
        _progress.clear();
        if (_isInterrupted) {
            endInterrupted();
        } else {
            _worst == ExitCode::Success ? _host->end() : _host->end(Failure(_worst, ""));
        }
    }

    const HostPointer _host;
    /// Absent for the best files.
    std::optional<double> _bitrate;
    const std::shared_ptr<FileQueue> _queue = FileQueue::withKey("videos");
    Progress _progress;
    std::vector<Wish> _wishes;
    /// Wishes that have not ended yet.
    std::size_t _open;
    std::size_t _read = 0;
    /// Files that are there now.
    std::int64_t _kept = 0;
    bool _isInterrupted = false;
    ExitCode _worst = ExitCode::Success;
};

} // namespace

std::string checkWish(const std::string& text) {
    const auto colon = text.find(':');
    if (colon != std::string::npos && !priorityOf(text.substr(colon + 1))) {
        return "'" + text.substr(colon + 1) + "' is not low, normal or high";
    }
    return checkIdentifier(text.substr(0, colon));
}

void downloadVideos(const HostPointer& host, const Arguments& arguments) {
    if (arguments.has("--directory")) {
        const auto path = std::filesystem::absolute(arguments.text("--directory"));
        videoCache()->setDocumentsDirectory(path.string() + "/");
    }
    videoDirectory(); // without one, nothing is requested
    std::make_shared<Downloads>(host, arguments)->start();
}

} // namespace KeloHost
