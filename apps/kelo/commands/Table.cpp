#include "commands/Commands.hpp"
#include "CommonOptions.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

using Form = Parameter::Form;
using Commands = std::vector<Command>;

std::string checkRequestPath(const std::string& path) {
    const bool good = !path.empty() && path.find("http") == std::string::npos;
    return good ? "" : "'" + path + "' is not a path such as users/me";
}

std::string checkUser(const std::string& user) {
    return user.empty() ? "the user's name is empty" : "";
}

Parameter identifier(const std::string& name, const std::string& help) {
    return {.name = name, .help = help, .check = checkIdentifier};
}

std::string orInput(const std::string& help) {
    return help + "; - reads them from standard input, one per line";
}

/// An identifier, or "-" for all that standard input holds.
Parameter identifiers(const std::string& name, const std::string& help) {
    Parameter parameter = identifier(name, orInput(help));
    parameter.isForEach = true;
    return parameter;
}

Parameter oneOf(const std::string& name, const std::vector<std::string>& choices,
                const std::string& help) {
    return {.name = name, .help = help, .choices = choices};
}

/// A whole number from 1 on.
Parameter count(const std::string& name, std::int64_t most, const std::string& help,
                const std::string& defaultValue = "", const std::string& valueName = "N") {
    return {.name = name,
            .help = help,
            .valueName = valueName,
            .defaultValue = defaultValue,
            .limits = Parameter::Limits{1, most}};
}

Parameter flag(const std::string& name, const std::string& help, const std::string& excluded = "") {
    return {.name = name, .help = help, .form = Form::Flag, .excluded = excluded};
}

Commands signingInCommands() {
    return {{"login",
             "Sign in and keep the session for this host, in a file that only you may read",
             {},
             login},
            {"logout", "Forget the session that login keeps for this host", {}, logout}};
}

Commands readingCommands() {
    return {{"me", "Show the signed-in user", {}, showMe},
            {"user",
             "Show a user",
             {{.name = "USER",
               .help = "The user's name or identifier; one of digits alone is an identifier",
               .check = checkUser}},
             showUser},
            {"timeline",
             "Show the posts of a feed",
             {{.name = "PATH",
               .help = "The feed: home, popular, users/1001, channels/1, tags/cats, ...",
               .check = checkPath},
              count("--pages", 1'000'000, "How many pages to read", "1"),
              flag("--all", "Read on to the feed's end", "--pages"),
              count("--size", 1000, "Posts in a page; 5 if it is not given"),
              flag("--details", "Show bylines, channels, venues, music, tags and links, too")},
             showTimeline},
            {"channels", "Show the channels", {}, listChannels},
            {"channel",
             "Show a channel and its first posts",
             {identifier("ID", "The channel's identifier"),
              count("--size", 1000, "How many posts", "5"),
              flag("--details", "Show bylines, venues, music, tags and links, too")},
             showChannel},
            {"inserts",
             "Show the cards between a feed's posts",
             {identifier("FEED", "The feed: home, popular, ...")},
             showInserts},
            {"venue",
             "Show a venue",
             {identifier("ID", "The venue's identifier, as timeline --details names it")},
             showVenue}};
}

Commands actingCommands() {
    const Parameter post = identifiers("POST", "The post's identifier");
    const Parameter user = identifiers("USER", "The user's identifier");
    return {{"like", "Like a post", {post}, like},
            {"unlike", "Remove a like", {post}, unlike},
            {"rekelo", "Repost a post", {post}, rekelo},
            {"unrekelo", "Remove a repost", {post}, unrekelo},
            {"follow", "Follow a user's account outside the service", {user}, follow},
            {"unfollow", "Stop following a user's account outside the service", {user}, unfollow},
            {"boost",
             "Ask for more or less of a user or of posts like one",
             {oneOf("KIND", {"user", "post"}, "user or post"), identifiers("ID", "Its identifier"),
              oneOf("BOOST", {"positive", "neutral", "negative"}, "positive, neutral or negative")},
             boost},
            {"loops",
             "Report how often a post has looped",
             {post, count("COUNT", 1'000'000'000, "How often it has looped", "", "")},
             submitLoops}};
}

Commands cacheCommands() {
    return {{"list", "Show the files, newest first, with their age and size", {}, listCache},
            {"trim",
             "Remove the oldest files: the newest N and one more are kept",
             {{.name = "N",
               .help = "One less than the number of files to keep",
               .limits = Parameter::Limits{0, 1'000'000'000}}},
             trimCache},
            {"path", "Show the directory", {}, showCachePath}};
}

Commands videoCommands() {
    return {{"upload",
             "Upload a long-form video, an MP4 file",
             {{.name = "FILE", .help = "The video's file", .form = Form::File},
              count("--segment-size", 1 << 30, "Bytes in a segment", "8388608", "BYTES"),
              count("--parallel", 16, "Segments that are sent at the same time", "4")},
             uploadVideo},
            {"views",
             "Show the views of a long-form video",
             {identifier("ID", "The video's identifier"),
              flag("--submit", "Report a view instead of showing them")},
             showOrSubmitViews},
            {"sounds", "Show the soundboard", {}, showSounds},
            {"download",
             "Download the videos of posts into the cache",
             {{.name = "POST",
               .help = orInput("The posts' identifiers, or POST:PRIORITY for one of its own"),
               .form = Form::List,
               .check = checkWish},
              {.name = "--bitrate",
               .help = "Bitrate of the connection, for which the files are chosen; if it is not "
                       "given, the best ones are",
               .form = Form::Bitrate,
               .valueName = "RATE"},
              {.name = "--priority",
               .help = "low, normal or high: what comes first",
               .valueName = "PRIORITY",
               .defaultValue = "normal",
               .choices = {"low", "normal", "high"}},
              {.name = "--directory",
               .help = "Save the files there instead of in the cache",
               .form = Form::Directory,
               .valueName = "DIR"}},
             downloadVideos},
            {"cache", "Manage the downloaded videos", {}, {}, cacheCommands()}};
}

Commands fileCommands() {
    return {{.name = "save",
             .help = "Save a record in a file that phones can read; see show",
             .parameters = {{.name = "FILE",
                             .help = "The file, which is replaced if it is there",
                             .form = Form::File},
                            oneOf("KIND",
                                  {"channel", "venue", "category", "sound", "thumbnail", "tag",
                                   "entity", "loops"},
                                  "channel, venue, category (of a venue), sound, thumbnail, tag or "
                                  "entity (of a post, the first), or loops, which are the "
                                  "signed-in user's"),
                            {.name = "ID",
                             .help = "The identifier; none for loops",
                             .check = checkIdentifier,
                             .isOptional = true}},
             .work = save,
             .check = checkSave},
            {"show",
             "Show a file that save or a phone has written",
             {{.name = "FILE", .help = "The file", .form = Form::File}},
             showFile}};
}

Commands developingCommands() {
    return {
        {"request",
         "Send any request and print the response as it came",
         {{.name = "PATH",
           .help = "The path: users/me, _service/health, ...",
           .check = checkRequestPath},
          {.name = "--method",
           .help = "The HTTP method",
           .valueName = "METHOD",
           .defaultValue = "GET",
           .choices = {"GET", "POST", "PUT", "DELETE"}},
          {.name = "--body", .help = "The body, in JSON", .valueName = "JSON"}},
         sendRequest},
        {.name = "serve",
         .help = "Run kelo-service, the local stand-in of the service, with the arguments given",
         .work = serve,
         .takesTheRest = true}};
}

/// Gives the commands their examples; `before` is the words before their names.
void addExamples(Commands& commands, const std::string& before) {
    for (Command& command : commands) {
        command.examples = examplesOf(before + command.name);
        addExamples(command.commands, before + command.name + " ");
    }
}

} // namespace

Command wholeProgram() {
    const std::pair<const char*, Commands> groups[] = {
        {"Signing in", signingInCommands()}, {"Reading", readingCommands()},
        {"Acting", actingCommands()},        {"Videos", videoCommands()},
        {"Files", fileCommands()},           {"Developing", developingCommands()},
        {"Help", describingCommands()}};
    Command kelo = {.name = "kelo",
                    .help = "The command-line host of the short-looping-video service.",
                    .parameters = commonParameters(),
                    .examples = examplesOf("")};
    for (const auto& [heading, commands] : groups) {
        for (Command command : commands) {
            command.group = command.group.empty() ? "" : heading;
            for (const Parameter& parameter : command.parameters) {
                if (parameter.isForEach) {
                    command.work = forEach(parameter.name, command.work);
                }
            }
            kelo.commands.push_back(std::move(command));
        }
    }
    addExamples(kelo.commands, "");
    return kelo;
}

std::string checkIdentifier(const std::string& text) {
    const auto mayHold = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               c == '-' || c == '_';
    };
    const bool good = !text.empty() && std::all_of(text.begin(), text.end(), mayHold) &&
                      text.find("http") == std::string::npos; // as in checkPath
    return good ? "" : "'" + text + "' is not a valid identifier";
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
