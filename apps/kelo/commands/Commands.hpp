#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace CLI {
class App;
}

namespace KeloHost {

class Host;

/// A command's work. It returns at once; what it started ends the program by `Host::end`.
using Start = std::function<void(const std::shared_ptr<Host>& host)>;

/// One command: its part of the command line, which is gone after parsing, and its work.
struct Command {
    CLI::App* app;
    Start start;
};

// One function per command, one source file per command and its undoing. A new one is declared
// here, and called in `addCommands`.
Command addMe(CLI::App& app);
Command addTimeline(CLI::App& app);
Command addChannel(CLI::App& app);
Command addInserts(CLI::App& app);
Command addVenue(CLI::App& app);
Command addLike(CLI::App& app);
Command addUnlike(CLI::App& app);
Command addRekelo(CLI::App& app);
Command addUnrekelo(CLI::App& app);
Command addFollow(CLI::App& app);
Command addUnfollow(CLI::App& app);
Command addBoost(CLI::App& app);
Command addLoops(CLI::App& app);
Command addUpload(CLI::App& app);
Command addViews(CLI::App& app);
Command addSounds(CLI::App& app);
Command addDownload(CLI::App& app);
Command addCache(CLI::App& app);
Command addSave(CLI::App& app);
Command addShow(CLI::App& app);
Command addServe(CLI::App& app);

inline std::vector<Command> addCommands(CLI::App& app) {
    return {addMe(app),       addTimeline(app), addChannel(app), addInserts(app),  addVenue(app),
            addLike(app),     addUnlike(app),   addRekelo(app),  addUnrekelo(app), addFollow(app),
            addUnfollow(app), addBoost(app),    addLoops(app),   addUpload(app),   addViews(app),
            addSounds(app),   addDownload(app), addCache(app),   addSave(app),     addShow(app),
            addServe(app)};
}

} // namespace KeloHost
