#include "ArchiveFile.hpp"
#include "commands/Commands.hpp"
#include "FeedPost.hpp"
#include "Host.hpp"
#include "Identifier.hpp"
#include "Output.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace KeloHost {

namespace {

using namespace KeloAPI;

/// Reads one model from the service and keeps it in a file.
class Saving : public std::enable_shared_from_this<Saving> {
public:
    Saving(std::shared_ptr<Host> host, std::string path, std::string kind, std::string id)
        : _host(std::move(host))
        , _path(std::move(path))
        , _kind(std::move(kind))
        , _id(std::move(id)) {}

    void start() {
        const auto whole = [](const std::shared_ptr<const Archivable>& model) { return model; };
        if (_kind == "channel") {
            read("channels/" + _id, std::make_shared<KLChannelParser>(), whole);
        } else if (_kind == "venue") {
            read("venues/" + _id, std::make_shared<KLFoursquareVenueParser>(), whole);
        } else if (_kind == "category") {
            read("venues/" + _id, std::make_shared<KLFoursquareVenueParser>(),
                 [](const std::shared_ptr<KLVenue>& venue) { return venue->category; });
        } else if (_kind == "sound") {
            readSound();
        } else if (_kind == "loops") {
            readLoops();
        } else {
            readPost();
        }
    }

private:
    /// Reads one record, of which `part` is to be kept; null for what is not there.
    template <class Parser>
    void read(
        const std::string& path, std::shared_ptr<Parser> parser,
        std::function<std::shared_ptr<const Archivable>(const std::shared_ptr<typename Parser::T>&)>
            part) {
        const auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
        endpoint->setPath(path);
        endpoint->request(std::move(parser),
                          [self = shared_from_this(), part = std::move(part)](
                              const std::vector<std::shared_ptr<typename Parser::T>>& models,
                              const std::optional<Metadata>&, const Timeline&,
                              const std::optional<Error>& error) {
                              self->keep(models.empty() ? nullptr : part(models.front()), error);
                          });
    }

    void readPost() {
        read("posts/" + _id, std::make_shared<FeedPostParser>(),
             [kind = _kind](const std::shared_ptr<FeedPost>& post) {
                 return kind == "thumbnail" ? thumbnailOf(*post)
                        : kind == "tag"     ? firstOf(post->tags)
                                            : firstOf(post->entities);
             });
    }

    /// The service does not tell its size.
    static std::shared_ptr<const Archivable> thumbnailOf(const FeedPost& post) {
        const auto url = URL::parse(post.post->thumbnailUrl.value_or(""));
        return url ? std::make_shared<PostThumbnail>(*url, 0, 0) : nullptr;
    }

    template <class Model>
    static std::shared_ptr<const Archivable>
    firstOf(const std::vector<std::shared_ptr<Model>>& models) {
        return models.empty() ? nullptr : models.front();
    }

    void readSound() {
        SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
            ->fetchSounds([self = shared_from_this()](
                              const std::vector<std::shared_ptr<SoundboardSound>>& sounds,
                              const std::optional<Error>& error) {
                const auto found =
                    std::find_if(sounds.begin(), sounds.end(),
                                 [&](const auto& sound) { return sound->soundId() == self->_id; });
                self->keep(found == sounds.end() ? nullptr : *found, error);
            });
    }

    void readLoops() {
        MeEndpoint::create()->get([self = shared_from_this()](const MeResult& result) {
            const auto* success = result.success();
            self->keep(success != nullptr ? success->user->loopData : nullptr,
                       success != nullptr ? std::nullopt : std::optional(*result.error()));
        });
    }

    void keep(const std::shared_ptr<const Archivable>& model, const std::optional<Error>& error) {
        if (error) {
            _host->fail(*error);
            return;
        }
        if (model == nullptr) {
            _host->end(Failure(ExitCode::Failed,
                               "the service names no such " + _kind + ": nothing is saved"));
            return;
        }
        try {
            ArchiveFile::write(_path, model);
            _host->output().done("saved " + _kind + " in", _path, std::nullopt);
            _host->end();
        } catch (const Failure& failure) {
            _host->end(failure);
        }
    }

    const std::shared_ptr<Host> _host;
    const std::string _path;
    const std::string _kind;
    const std::string _id;
};

struct Arguments {
    std::string path;
    std::string kind;
    std::string id;
};

} // namespace

Command addSave(CLI::App& app) {
    auto* command =
        app.add_subcommand("save", "Keep something in a file that phones read, too; see show");
    const auto arguments = std::make_shared<Arguments>();
    command->add_option("FILE", arguments->path, "The file, which is replaced if it is there")
        ->required()
        ->type_name("");
    command
        ->add_option("KIND", arguments->kind,
                     "channel, venue, category (of a venue), sound, thumbnail, tag or entity (of a "
                     "post, the first), or loops, which are the signed-in user's")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember(
            {"channel", "venue", "category", "sound", "thumbnail", "tag", "entity", "loops"}));
    auto* id = command->add_option("ID", arguments->id, "The identifier; none for loops")
                   ->type_name("")
                   ->check(CLI::Validator(checkIdentifier, ""));
    command->callback([arguments, id] {
        if (arguments->kind == "loops" ? id->count() != 0 : id->count() == 0) {
            throw CLI::ValidationError("ID", arguments->kind == "loops"
                                                 ? "loops are the signed-in user's own"
                                                 : "needed for a " + arguments->kind);
        }
    });
    return {command, [arguments](const std::shared_ptr<Host>& host) {
                std::make_shared<Saving>(host, arguments->path, arguments->kind, arguments->id)
                    ->start();
            }};
}

} // namespace KeloHost
