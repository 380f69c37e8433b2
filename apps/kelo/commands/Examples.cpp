#include "commands/Commands.hpp"

#include <map>

namespace KeloHost {

namespace {

using Examples = std::vector<Example>;

// The identifiers are those of `kelo serve`, so that each line can be tried as it stands.
const std::map<std::string, Examples>& allExamples() {
    static const std::map<std::string, Examples> all = {
        {"",
         {{"kelo serve", "A service of your own on this machine"},
          {"kelo timeline popular", "The posts that are popular, in another terminal"}}},
        {"login",
         {{"kelo login --user mara", "Asks for the password"},
          {"kelo login --user mara --no-input", "With the password that KELO_PASSWORD holds"}}},
        {"logout",
         {{"kelo logout", "The next command needs a session of its own"},
          {"kelo logout --json", "The same for another program"}}},
        {"user", {{"kelo user kofi", "By the name"}, {"kelo user 1002", "By the identifier"}}},
        {"channels",
         {{"kelo channels", "The channels and their identifiers"},
          {"kelo channels --json", "With all their fields, for another program"}}},
        {"me",
         {{"kelo me", "Your name and your loops"},
          {"kelo me --json", "The same for another program"}}},
        {"timeline",
         {{"kelo timeline popular --pages 3", "The first three pages of a feed"},
          {"kelo timeline home --all --json", "All of it for another program, one post a line"}}},
        {"channel",
         {{"kelo channel 3 --size 20", "A channel with its first twenty posts"},
          {"kelo channel 3 --details", "With the bylines, venues and music of the posts"}}},
        {"inserts",
         {{"kelo inserts home", "The cards of your own feed"},
          {"kelo inserts popular --json", "Those of another one, with the posts in them"}}},
        {"venue",
         {{"kelo venue 50a1f0c2e4b0000000000005", "Where a venue is"},
          {"kelo venue 50a1f0c2e4b0000000000005 --json", "The same for another program"}}},
        {"like",
         {{"kelo like 1150000000005093530", "The post whose postId that is"},
          {"kelo like 1150000000005093530 --json", "With the identifier of the like as JSON"}}},
        {"unlike",
         {{"kelo unlike 1150000000005093530", "You do not like it any more"},
          {"kelo unlike 1150000000005093530 --json", "The same for another program"}}},
        {"rekelo",
         {{"kelo rekelo 1150000000005093530", "Those who follow you see the post"},
          {"kelo rekelo 1150000000005093530 --json", "With the identifier of the repost as JSON"}}},
        {"unrekelo",
         {{"kelo unrekelo 1150000000005093530", "Those who follow you see it no longer"},
          {"kelo unrekelo 1150000000005093530 --json", "The same for another program"}}},
        {"follow",
         {{"kelo follow 1002", "The user whose identifier that is"},
          {"kelo follow 1002 --json", "The same for another program"}}},
        {"unfollow",
         {{"kelo unfollow 1002", "The user whose identifier that is"},
          {"kelo unfollow 1002 --json", "The same for another program"}}},
        {"boost",
         {{"kelo boost user 1002 positive", "More of that user"},
          {"kelo boost post 1150000000005093530 negative", "Less of what is like that post"}}},
        {"loops",
         {{"kelo loops 1150000000005093530 5", "The post has looped five times"},
          {"kelo loops 1150000000005093530 1 --json", "Once, told to another program"}}},
        {"upload",
         {{"kelo upload video.mp4", "A video, followed until the service has processed it"},
          {"kelo upload video.mp4 --segment-size 1000000 --parallel 2",
           "Little at a time, for a connection that is slow"}}},
        {"views",
         {{"kelo views lf-clay-orchestra", "How often a video was seen"},
          {"kelo views lf-clay-orchestra --submit", "You have seen it, too"}}},
        {"sounds",
         {{"kelo sounds", "The sounds and their identifiers"},
          {"kelo sounds --json", "With the addresses of their files"}}},
        {"download",
         {{"kelo download 1150000000005093530 1150000000005089419:high",
           "Two videos into the cache, the second one first"},
          {"kelo download 1150000000005093530 --bitrate 500 --directory .",
           "One that is small enough for the connection, into this folder"}}},
        {"cache",
         {{"kelo cache list", "What is in the cache"},
          {"kelo cache trim 9", "Only the ten newest files stay"}}},
        {"cache list",
         {{"kelo cache list", "The files, newest first"},
          {"kelo cache list --json", "With the time of each, for another program"}}},
        {"cache trim",
         {{"kelo cache trim 9", "Only the ten newest files stay"},
          {"kelo cache trim 0", "Only the newest one stays"}}},
        {"cache path",
         {{"kelo cache path", "Where the cache is"},
          {"kelo cache path --json", "The same for another program"}}},
        {"save",
         {{"kelo save animals channel 3", "A channel in the file animals"},
          {"kelo save my-loops loops", "Your own loops in the file my-loops"}}},
        {"show",
         {{"kelo show animals", "What kelo save animals has kept"},
          {"kelo show animals --json", "The same for another program"}}},
        {"request",
         {{"kelo request users/me", "The response of the service as it came"},
          {"kelo request posts/1150000000005093530/likes --method POST --body '{}'",
           "A request with a body"}}},
        {"serve",
         {{"kelo serve", "A service on this machine, for as long as it runs"},
          {"kelo serve --port 0 --quiet", "One at any free port"}}},
        {"help",
         {{"kelo help timeline", "How kelo timeline is used"},
          {"kelo help cache trim", "How a command of a command is used"}}}};
    return all;
}

} // namespace

std::vector<Example> examplesOf(const std::string& command) {
    const auto found = allExamples().find(command);
    return found == allExamples().end() ? std::vector<Example>() : found->second;
}

} // namespace KeloHost
