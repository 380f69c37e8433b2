#pragma once

#include "Command.hpp"
#include "Failure.hpp"
#include "Host.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace KeloHost {

using HostPointer = std::shared_ptr<Host>;

// The work of the commands.
using Work = void(const HostPointer& host, const Arguments& arguments);
Work showMe, showUser, showTimeline, listChannels, showChannel, showInserts, showVenue, showSounds,
    showOrSubmitViews;
Work like, unlike, rekelo, unrekelo, follow, unfollow, boost, submitLoops;
Work uploadVideo, downloadVideos, listCache, trimCache, showCachePath;
Work login, logout, save, showFile, sendRequest, serve;

/// `work` for the parameter of that name, or, where that is "-", for each of the identifiers that
/// standard input holds.
std::function<Work> forEach(const std::string& name, const std::function<Work>& work);
/// The lines of standard input, without those that are blank. Throws a `Failure` unless `check`
/// finds all of them good.
std::vector<std::string> linesOfInput(std::string (*check)(const std::string& text));

/// The commands that tell about kelo itself.
std::vector<Command> describingCommands();
/// Of the command that these words name.
std::vector<Example> examplesOf(const std::string& command);

/// The cache that downloaded videos are kept in, in the user's data directory.
std::shared_ptr<KeloAPI::FileManager> videoCache();
/// Where it is, with a "/" at its end. Throws a `Failure` when there is none.
std::string videoDirectory();

// What is wrong with an argument; an empty text for a good one.

/// An identifier becomes part of a path, so it may not hold what would lead elsewhere.
std::string checkIdentifier(const std::string& text);
/// The library takes a path that holds "http" for a URL; the session key must not go there.
std::string checkPath(const std::string& path);
/// POST or POST:PRIORITY.
std::string checkWish(const std::string& text);
std::string checkSave(const Arguments& arguments);

/// Reads the records at a path and hands them to `use`, unless the call fails.
template <class Parser, class Use>
void readRecords(const HostPointer& host, const std::string& path, std::shared_ptr<Parser> parser,
                 Use use, KeloAPI::Parameters parameters = {}) {
    const auto endpoint =
        KeloAPI::Endpoint::create(KeloAPI::Api::session(KeloAPI::SessionType::Authenticated));
    endpoint->setPath(path);
    endpoint->setParameters(std::move(parameters));
    endpoint->request(std::move(parser),
                      [=](const auto& records, const auto&, const auto&, const auto& error) {
                          host->hear(error, [&] { use(records); });
                      });
}

/// The same for a path with one record; where there is none, the program ends with the complaint.
template <class Parser, class Use>
void readRecord(const HostPointer& host, const std::string& path, std::shared_ptr<Parser> parser,
                const std::string& complaint, Use use, KeloAPI::Parameters parameters = {}) {
    const auto useFirst = [=](const auto& records) {
        if (records.empty()) {
            throw Failure(ExitCode::Failed, complaint);
        }
        use(*records.front());
    };
    readRecords(host, path, std::move(parser), useFirst, std::move(parameters));
}

} // namespace KeloHost
