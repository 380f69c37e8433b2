#include "commands/Commands.hpp"

#include <algorithm>
#include <cctype>

namespace KeloHost {

namespace {

using Form = Parameter::Form;

constexpr const char* reading = "Reading";
constexpr const char* acting = "Acting";
constexpr const char* videos = "Videos";
constexpr const char* files = "Files";
constexpr const char* developing = "Developing";

Parameter identifier(const std::string& name, const std::string& help) {
    return {.name = name, .help = help, .check = checkIdentifier};
}

Parameter countOption(const std::string& name, const std::string& help, std::int64_t most,
                      const std::string& defaultValue, const std::string& valueName = "N") {
    return {.name = name,
            .help = help,
            .valueName = valueName,
            .defaultValue = defaultValue,
            .limits = Parameter::Limits{1, most}};
}

Parameter flag(const std::string& name, const std::string& help, const std::string& excluded = "") {
    return {.name = name, .help = help, .form = Form::Flag, .excluded = excluded};
}

std::string checkRequestPath(const std::string& path) {
    const bool good = !path.empty() && path.find("http") == std::string::npos;
    return good ? "" : "'" + path + "' is no path, as users/me is one";
}

const Parameter post = identifier("POST", "The post's identifier");
const Parameter user = identifier("USER", "The user's identifier");

std::vector<Command> readingCommands() {
    return {{"me", reading, "Show the signed-in user", {}, showMe},
            {"timeline",
             reading,
             "Show the posts of a feed",
             {{.name = "PATH",
               .help = "The feed: home, popular, users/1001, channels/1, tags/cats, ...",
               .check = checkPath},
              countOption("--pages", "How many pages to read", 1'000'000, "1"),
              flag("--all", "Read on to the feed's end", "--pages"),
              countOption("--size", "Posts in a page (5)", 1000, ""),
              flag("--details", "Show bylines, channels, venues, music, tags and links, too")},
             showTimeline},
            {"channel",
             reading,
             "Show a channel and its first posts",
             {identifier("ID", "The channel's identifier"),
              countOption("--size", "How many posts", 1000, "5"),
              flag("--details", "Show bylines, venues, music, tags and links, too")},
             showChannel},
            {"inserts",
             reading,
             "Show the cards between a feed's posts",
             {identifier("FEED", "The feed: home, popular, ...")},
             showInserts},
            {"venue",
             reading,
             "Show a venue",
             {identifier("ID", "The venue's identifier, as timeline --details names it")},
             showVenue}};
}

std::vector<Command> actingCommands() {
    return {{"like",
             acting,
             "Like a post",
             {post},
             [](const auto& host, const auto& arguments) { like(host, arguments, true); }},
            {"unlike",
             acting,
             "Take a like back",
             {post},
             [](const auto& host, const auto& arguments) { like(host, arguments, false); }},
            {"rekelo", acting, "Repost a post", {post}, rekelo},
            {"unrekelo", acting, "Take a repost back", {post}, unrekelo},
            {"follow",
             acting,
             "Follow a user's account outside the service",
             {user},
             [](const auto& host, const auto& arguments) { follow(host, arguments, true); }},
            {"unfollow",
             acting,
             "Stop following a user's account outside the service",
             {user},
             [](const auto& host, const auto& arguments) { follow(host, arguments, false); }},
            {"boost",
             acting,
             "Say whether you want more of a user or post",
             {{.name = "KIND", .help = "user or post", .choices = {"user", "post"}},
              identifier("ID", "Its identifier"),
              {.name = "BOOST",
               .help = "positive, neutral or negative",
               .choices = {"positive", "neutral", "negative"}}},
             boost},
            {"loops",
             acting,
             "Report how often a post has looped",
             {post, countOption("COUNT", "How often it has looped", 1'000'000'000, "", "")},
             submitLoops}};
}

Command downloadCommand() {
    return {"download",
            videos,
            "Download the videos of posts into the cache",
            {{.name = "POST",
              .help = "The posts' identifiers; POST:PRIORITY gives one a priority of its own",
              .form = Form::List,
              .check = checkWish},
             {.name = "--bitrate",
              .help = "Bitrate of the connection, which the files are chosen for; the best one "
                      "is taken otherwise",
              .form = Form::Bitrate,
              .valueName = "RATE"},
             {.name = "--priority",
              .help = "low, normal or high: what comes first",
              .valueName = "PRIORITY",
              .defaultValue = "normal",
              .choices = {"low", "normal", "high"}},
             {.name = "--directory",
              .help = "Keep them there, not in the cache",
              .form = Form::Directory,
              .valueName = "DIR"}},
            downloadVideos};
}

Command cacheCommand() {
    const Parameter kept = {.name = "N",
                            .help = "One less than the number of files to keep",
                            .limits = Parameter::Limits{0, 1'000'000'000}};
    return {
        .name = "cache",
        .group = videos,
        .help = "Look after the videos that were downloaded",
        .commands = {
            {"list", "", "Show the files, newest first, with their age and size", {}, listCache},
            {"trim",
             "",
             "Remove the oldest files: the newest N and one more are kept",
             {kept},
             trimCache},
            {"path", "", "Show the directory", {}, showCachePath}}};
}

std::vector<Command> videoCommands() {
    return {
        {"upload",
         videos,
         "Upload a long-form video, an MP4 file",
         {{.name = "FILE", .help = "The video's file"},
          countOption("--segment-size", "Bytes that are sent at once", 1 << 30, "8388608", "BYTES"),
          countOption("--parallel", "Segments that are under way together", 16, "4")},
         uploadVideo},
        {"views",
         videos,
         "Show the views of a long-form video",
         {identifier("ID", "The video's identifier"),
          flag("--submit", "Report a view of one's own instead")},
         showOrSubmitViews},
        {"sounds", videos, "Show the soundboard", {}, showSounds},
        downloadCommand(),
        cacheCommand()};
}

Command saveCommand() {
    return {.name = "save",
            .group = files,
            .help = "Keep something in a file that phones read, too; see show",
            .parameters = {{.name = "FILE", .help = "The file, which is replaced if it is there"},
                           {.name = "KIND",
                            .help = "channel, venue, category (of a venue), sound, thumbnail, tag "
                                    "or entity (of a post, the first), or loops, which are the "
                                    "signed-in user's",
                            .choices = {"channel", "venue", "category", "sound", "thumbnail", "tag",
                                        "entity", "loops"}},
                           {.name = "ID",
                            .help = "The identifier; none for loops",
                            .check = checkIdentifier,
                            .isOptional = true}},
            .work = save,
            .check = checkSave};
}

std::vector<Command> otherCommands() {
    return {saveCommand(),
            {"show",
             files,
             "Show what a file holds that save, or a phone, wrote",
             {{.name = "FILE", .help = "The file"}},
             showFile},
            {"request",
             developing,
             "Send a request of one's own and show the answer as it came",
             {{.name = "PATH",
               .help = "Where to: users/me, _service/health, ...",
               .check = checkRequestPath},
              {.name = "--method",
               .help = "What to ask for",
               .valueName = "METHOD",
               .defaultValue = "GET",
               .choices = {"GET", "POST", "PUT", "DELETE"}},
              {.name = "--body", .help = "JSON to be sent", .valueName = "JSON"}},
             sendRequest},
            {.name = "serve",
             .group = developing,
             .help = "Run kelo-service, the local stand-in of the service, with the arguments "
                     "given",
             .work = serve,
             .takesTheRest = true}};
}

} // namespace

std::vector<Command> allCommands() {
    std::vector<Command> commands;
    for (const auto& part :
         {readingCommands(), actingCommands(), videoCommands(), otherCommands()}) {
        commands.insert(commands.end(), part.begin(), part.end());
    }
    return commands;
}

std::string checkIdentifier(const std::string& text) {
    const bool good = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == '-' || c == '_';
    });
    return good ? "" : "'" + text + "' is no identifier";
}

std::string checkPath(const std::string& path) {
    if (path.empty()) {
        return "the feed's path is empty";
    }
    return path.find("http") == std::string::npos
               ? ""
               : "'" + path + "' is a URL; give a feed's path, as in popular or users/1001";
}

} // namespace KeloHost
