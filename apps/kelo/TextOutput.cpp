#include "CardText.hpp"
#include "DateText.hpp"
#include "FeedPost.hpp"
#include "Output.hpp"
#include "PostDetails.hpp"
#include "SizeText.hpp"
#include "Terminal.hpp"
#include "TextWidth.hpp"

#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <variant>

namespace KeloHost {

using namespace KeloAPI;

namespace {

// Pages are printed as they come; columns that are wide enough from the start stay in line.
constexpr std::size_t leastNameWidth = 14;
constexpr std::size_t leastLoopsWidth = 17;
constexpr std::size_t leastCaptionWidth = 20;
/// Behind the dates.
constexpr std::size_t detailIndent = 18;

/// 1234567 as "1,234,567".
std::string grouped(std::string digits) {
    for (std::size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, 1, ',');
    }
    return digits;
}

std::string loopsText(const std::shared_ptr<KLWatchUser>& user) {
    if (user == nullptr || user->loopData == nullptr) {
        return "-";
    }
    return grouped(std::to_string(user->loopData->count.uint64Value())) + " loops";
}

std::string displayNameOf(const std::shared_ptr<KLWatchUser>& user) {
    return user == nullptr ? "?" : printable(user->username.value_or("?"));
}

std::string scalarText(const ParameterValue& value) {
    struct Text {
        std::string operator()(std::nullptr_t) const { return "-"; }
        std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(std::uint64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return Number::of(number).stringValue(); }
        std::string operator()(const std::string& text) const { return printable(text); }
        std::string operator()(const ParameterList&) const { return "..."; }
        std::string operator()(const Parameters&) const { return ""; }
    };
    return std::visit(Text(), value.held());
}

/// One line for each field, those of a field's own further in.
void printFields(const Parameters& fields, const std::string& indent) {
    for (const auto& [name, value] : fields) {
        if (const auto* inner = std::get_if<Parameters>(&value.held())) {
            std::printf("%s%s:\n", indent.c_str(), name.c_str());
            printFields(*inner, indent + "  ");
        } else {
            std::printf("%s%s: %s\n", indent.c_str(), name.c_str(), scalarText(value).c_str());
        }
    }
}

/// A heart for a like, an arrow for a repost of the signed-in user.
std::string marksOf(const KLWatchPost& post) {
    std::string marks = post.liked.value_or(false) ? "♥" : " ";
    marks.append(post.rekeloed() ? "↻" : " ");
    return marks;
}

std::string countText(std::size_t files) {
    return std::to_string(files) + (files == 1 ? " file" : " files");
}

class TextOutput final : public Output {
public:
    void user(const KLWatchUser& user) override {
        std::printf("%s\n", printable(user.username.value_or("?")).c_str());
        if (user.loopData != nullptr) {
            const double velocity = user.loopData->velocity.doubleValue();
            std::printf(std::abs(velocity) < 1e15 ? "%s loops, %.1f more each second\n"
                                                  : "%s loops, %g more each second\n",
                        grouped(std::to_string(user.loopData->count.uint64Value())).c_str(),
                        velocity);
        }
    }

    void feedName(const std::string& name) override {
        std::printf("%s\n", printable(name).c_str());
    }

    void posts(const std::vector<std::shared_ptr<FeedPost>>& posts, bool details) override {
        std::size_t nameWidth = leastNameWidth;
        std::size_t loopsWidth = leastLoopsWidth;
        for (const auto& shown : posts) {
            nameWidth = std::max(nameWidth, displayWidth(displayNameOf(shown->post->user)));
            loopsWidth = std::max(loopsWidth, displayWidth(loopsText(shown->post->user)));
        }
        for (const auto& shown : posts) {
            print(*shown->post, nameWidth, loopsWidth);
            if (details) {
                printDetails(*shown);
            }
        }
        flush();
    }

    void endOfPosts(std::size_t count, bool more) override {
        if (count == 0) {
            std::printf("This feed is empty.\n");
        } else if (more && Terminal::showsOutput()) {
            Terminal::say("There are more: --pages N or --all reads on.");
        }
    }

    void channel(const KLChannel& channel, bool details) override {
        feedName(channel.name + (channel.following ? " (followed)" : ""));
        if (channel.channelDescription) {
            feedName(*channel.channelDescription);
        }
        std::vector<std::shared_ptr<FeedPost>> shown;
        if (channel.timelineData != nullptr) {
            for (const auto& element : *channel.timelineData) {
                shown.push_back(std::dynamic_pointer_cast<FeedPost>(element));
            }
        }
        posts(shown, details);
    }

    void venue(const KLVenue& venue) override {
        std::printf("%s\n", venueText(venue).c_str());
        if (venue.latitude != 0 || venue.longitude != 0) {
            std::printf("%.4f, %.4f\n", venue.latitude, venue.longitude);
        }
    }

    void inserts(const std::vector<std::shared_ptr<KLFeedInsert>>& inserts) override {
        for (const auto& insert : inserts) {
            std::printf("%s\n", cardText(*insert).c_str());
        }
        if (inserts.empty()) {
            std::printf("This feed has no cards.\n");
        }
    }

    void views(const KLLongformViews& views) override {
        std::printf("%lld views\n", static_cast<long long>(views.count()));
    }

    void sounds(const std::vector<std::shared_ptr<SoundboardSound>>& sounds) override {
        for (const auto& sound : sounds) {
            std::printf("%-10s %s %s\n", printable(sound->soundId()).c_str(),
                        sound->featured() ? "★" : " ", printable(sound->name()).c_str());
        }
        if (sounds.empty()) {
            std::printf("The soundboard is empty.\n");
        }
    }

    void upload(const KLVideoUpload& upload) override {
        std::string line = "video " + upload.mediaId();
        if (upload.processingInfo) {
            line += ": " + std::string(rawValue(upload.processingInfo->state()));
        }
        if (upload.size) {
            line += ", " + std::to_string(*upload.size) + " bytes";
        }
        std::printf("%s\n", printable(line).c_str());
    }

    void done(const std::string& deed, const std::string& id,
              const std::optional<std::string>& deedId) override {
        std::string line = deed + " " + id;
        if (deedId) {
            line += " (" + *deedId + ")";
        }
        std::printf("%s\n", printable(line).c_str());
    }

    void downloaded(const Downloaded& file) override {
        std::printf("post %s%s: %s (%s)\n", file.postId.c_str(),
                    file.cached ? ", already cached" : "", printable(file.path).c_str(),
                    sizeText(file.bytes).c_str());
        flush();
    }

    void cachedFiles(const std::vector<CachedFile>& files) override {
        std::uint64_t bytes = 0;
        for (const CachedFile& file : files) {
            bytes += file.bytes;
            std::printf(
                "%s  %s  %s\n", rightAligned(ageText(Date::now() - file.modified), 8).c_str(),
                rightAligned(sizeText(file.bytes), 8).c_str(), printable(file.name).c_str());
        }
        if (files.empty()) {
            std::printf("The cache is empty.\n");
        } else {
            std::printf("%s, %s\n", countText(files.size()).c_str(), sizeText(bytes).c_str());
        }
    }

    void trimmed(std::size_t removed, std::size_t left) override {
        std::printf("removed %s, %s left\n", countText(removed).c_str(), countText(left).c_str());
    }

    void directory(const std::string& path) override { std::printf("%s\n", path.c_str()); }

    void archived(const std::string& className, const Parameters& fields) override {
        std::printf("%s\n", className.c_str());
        printFields(fields, "  ");
    }

private:
    static void print(const KLWatchPost& post, std::size_t nameWidth, std::size_t loopsWidth) {
        std::string line = post.created ? shortText(*post.created) : std::string(16, '-');
        line += "  " + padded(displayNameOf(post.user), nameWidth);
        line += "  " + rightAligned(loopsText(post.user), loopsWidth);
        line += "  " + marksOf(post) + "  ";
        std::string caption = printable(post.caption.value_or(""));
        if (const auto columns = Terminal::columns()) {
            const std::size_t used = displayWidth(line);
            const std::size_t room = *columns > used ? *columns - used : 0;
            caption = clipped(caption, std::max(room, leastCaptionWidth));
        }
        line += caption;
        line.erase(line.find_last_not_of(' ') + 1);
        std::printf("%s\n", line.c_str());
    }

    static void printDetails(const FeedPost& post) {
        const std::string indent(detailIndent, ' ');
        for (std::string line : detailLines(post)) {
            if (const auto columns = Terminal::columns()) {
                const std::size_t room = *columns > detailIndent ? *columns - detailIndent : 0;
                line = clipped(line, std::max(room, leastCaptionWidth));
            }
            std::printf("%s%s\n", indent.c_str(), line.c_str());
        }
    }
};

} // namespace

std::unique_ptr<Output> makeTextOutput() {
    return std::make_unique<TextOutput>();
}

} // namespace KeloHost
