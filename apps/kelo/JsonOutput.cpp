#include "DateText.hpp"
#include "FeedPost.hpp"
#include "JsonFields.hpp"
#include "Output.hpp"

#include <KeloAPI/http/ParameterEncoding.hpp>
#include <KeloAPI/json/Parameters.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <cstdio>
#include <string>
#include <string_view>

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// The library writes JSON into request bodies; this borrows its writer.
void printObject(const Parameters& fields) {
    URLRequest request;
    ParameterEncoding::JSON.encode(request, fields);
    const std::string_view json = request.body ? request.body->text() : "null";
    std::printf("%.*s\n", static_cast<int>(json.size()), json.data());
}

class JsonOutput final : public Output {
public:
    void user(const KLWatchUser& user) override { printObject(fieldsOf(user)); }

    void feedName(const std::string&) override {}

    void posts(const std::vector<std::shared_ptr<FeedPost>>& posts, bool) override {
        for (const auto& post : posts) {
            printObject(fieldsOf(*post));
        }
        flush();
    }

    void endOfPosts(std::size_t, bool) override {}

    void channel(const KLChannel& channel, bool) override { printObject(fieldsOf(channel)); }

    void venue(const KLVenue& venue) override { printObject(fieldsOf(venue)); }

    void inserts(const std::vector<std::shared_ptr<KLFeedInsert>>& inserts) override {
        for (const auto& insert : inserts) {
            printObject(fieldsOf(*insert));
        }
    }

    void views(const KLLongformViews& views) override {
        printObject({{"longformId", views.longformId()}, {"count", views.count()}});
    }

    void sounds(const std::vector<std::shared_ptr<SoundboardSound>>& sounds) override {
        for (const auto& sound : sounds) {
            printObject(fieldsOf(*sound));
        }
    }

    void upload(const KLVideoUpload& upload) override {
        const auto& info = upload.processingInfo;
        printObject({{"mediaId", upload.mediaId()},
                     {"state", info ? ParameterValue(std::string(rawValue(info->state())))
                                    : ParameterValue()},
                     {"size", valueOf(upload.size)}});
    }

    void done(const std::string& deed, const std::string& id,
              const std::optional<std::string>& deedId) override {
        printObject({{"done", deed}, {"id", id}, {"deedId", valueOf(deedId)}});
    }

    void downloaded(const Downloaded& file) override {
        printObject({{"postId", file.postId},
                     {"path", file.path},
                     {"bytes", file.bytes},
                     {"cached", file.cached}});
        flush();
    }

    void cachedFiles(const std::vector<CachedFile>& files) override {
        for (const CachedFile& file : files) {
            printObject(
                {{"name", file.name}, {"bytes", file.bytes}, {"modified", isoText(file.modified)}});
        }
    }

    void trimmed(std::size_t removed, std::size_t left) override {
        printObject({{"removed", std::uint64_t{removed}}, {"left", std::uint64_t{left}}});
    }

    void directory(const std::string& path) override { printObject({{"directory", path}}); }

    void archived(const std::string& className, const Parameters& fields) override {
        Parameters object = fields;
        object.emplace("class", className);
        printObject(object);
    }
};

} // namespace

std::unique_ptr<Output> makeJsonOutput() {
    return std::make_unique<JsonOutput>();
}

} // namespace KeloHost
