#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/json/Parameters.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI {
class KLChannel;
class KLFeedInsert;
class KLLongformViews;
class KLVenue;
class KLVideoUpload;
class KLWatchUser;
class SoundboardSound;
} // namespace KeloAPI

namespace KeloHost {

class FeedPost;

/// A post's video that is there.
struct Downloaded {
    std::string postId;
    std::string path;
    std::uint64_t bytes = 0;
    /// It was there before.
    bool cached = false;
};

/// One file of the cache.
struct CachedFile {
    std::string name;
    std::uint64_t bytes = 0;
    KeloAPI::Date modified;
};

/// Prints models on standard output. What cannot be written stays in the stream's error mark, which
/// `main` looks at in the end.
class Output {
public:
    Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    virtual ~Output();

    virtual void user(const KeloAPI::KLWatchUser& user) = 0;
    /// The name of the feed whose posts follow.
    virtual void feedName(const std::string& name) = 0;
    /// One page of posts; out at once. `details` is for people: programs have all of them anyway.
    virtual void posts(const std::vector<std::shared_ptr<FeedPost>>& posts, bool details) = 0;
    /// So many posts were printed in all; `more` says that the feed goes on.
    virtual void endOfPosts(std::size_t count, bool more) = 0;
    /// A channel with the posts of its timeline, which are `FeedPost`s.
    virtual void channel(const KeloAPI::KLChannel& channel, bool details) = 0;
    virtual void venue(const KeloAPI::KLVenue& venue) = 0;
    /// The cards of a feed.
    virtual void inserts(const std::vector<std::shared_ptr<KeloAPI::KLFeedInsert>>& inserts) = 0;
    virtual void views(const KeloAPI::KLLongformViews& views) = 0;
    virtual void sounds(const std::vector<std::shared_ptr<KeloAPI::SoundboardSound>>& sounds) = 0;
    /// A video that was uploaded and processed.
    virtual void upload(const KeloAPI::KLVideoUpload& upload) = 0;
    /// Something was done: "liked post", its identifier, and the identifier that the service gave
    /// the deed, where it gave one.
    virtual void done(const std::string& deed, const std::string& id,
                      const std::optional<std::string>& deedId) = 0;
    /// Out at once.
    virtual void downloaded(const Downloaded& file) = 0;
    virtual void cachedFiles(const std::vector<CachedFile>& files) = 0;
    /// How many files were removed from the cache, and how many are left.
    virtual void trimmed(std::size_t removed, std::size_t left) = 0;
    virtual void directory(const std::string& path) = 0;
    /// What an archive keeps of a model of this class.
    virtual void archived(const std::string& className, const KeloAPI::Parameters& fields) = 0;

protected:
    /// Lets what was printed be seen now.
    static void flush();
};

/// For people: aligned, and as wide as the terminal.
std::unique_ptr<Output> makeTextOutput();
/// For programs: one JSON object a line, with every field of the model; null for an absent one.
std::unique_ptr<Output> makeJsonOutput();

} // namespace KeloHost
