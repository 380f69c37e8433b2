#include "Feed.hpp"
#include "Records.hpp"
#include "Terminal.hpp"
#include "Text.hpp"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

namespace KeloHost {

using namespace KeloAPI;

namespace {

// Pages are printed as they come; columns that are wide enough from the start stay in line.
constexpr std::size_t leastNameWidth = 14;
constexpr std::size_t leastLoopsWidth = 12;
constexpr std::size_t leastCaptionWidth = 12;
/// Of a date, the marks, and the blanks that part them from the rest of a post.
constexpr std::size_t widthBetween = 22;
/// Behind the identifiers.
constexpr std::size_t detailIndent = 21;
/// Where the terminal is too narrow to have all of a record in a line.
constexpr std::size_t narrowIndent = 2;

std::string loopsText(const std::shared_ptr<KLWatchUser>& user) {
    return user == nullptr || user->loopData == nullptr
               ? "-"
               : compactText(user->loopData->count.uint64Value()) + " " +
                     plural(user->loopData->count.uint64Value(), "loop");
}

std::string nameOf(const FeedUser& shown) {
    return shown.user->username.value_or("?");
}

/// Printable text, cut to what `used` columns leave of the terminal.
std::string fitted(std::size_t used, const std::string& text) {
    const auto columns = Terminal::columns();
    if (!columns) {
        return text;
    }
    const std::size_t room = *columns > used ? *columns - used : 0;
    return clipped(text, std::max(room, leastCaptionWidth));
}

bool isNarrowerThan(std::size_t width) {
    const auto columns = Terminal::columns();
    return columns && *columns < width;
}

std::string idOf(const FeedPost& shown) {
    return shown.post->postId.value_or("?");
}

struct Widths {
    std::size_t id = 0;
    std::size_t name = leastNameWidth;
    std::size_t loops = leastLoopsWidth;
    bool areNarrow = false;
};

/// The post, its author with a heart for a like and an arrow for a repost of the signed-in user,
/// and its caption, in one line or in three.
Lines linesOf(const FeedPost& shown, const Widths& widths) {
    const KLWatchPost& post = *shown.post;
    const std::string date = post.created ? dayText(*post.created) : std::string(10, '-');
    Lines lines;
    Line line(padded(idOf(shown), widths.id) + "  ");
    const auto nextPart = [&] {
        if (widths.areNarrow) {
            lines.push_back(std::exchange(line, std::string(narrowIndent, ' ')));
        } else {
            line.add("  ");
        }
    };
    line.add(date, Style::Dim);
    nextPart();
    line.add(padded(nameOf(*shown.author), widths.name), Style::Bold)
        .add("  " + rightAligned(loopsText(post.user), widths.loops), Style::Dim)
        .add("  ");
    post.liked.value_or(false) ? line.add("♥", Style::Red) : line.add(" ");
    post.rekeloed() ? line.add("↻", Style::Green) : line.add(" ");
    nextPart();
    line.add(fitted(line.displayWidth(), printable(post.caption.value_or(""))));
    lines.push_back(line);
    return lines;
}

std::string venueText(const KLVenue& venue) {
    std::string text = venue.name;
    for (const auto& part : {venue.address, venue.city, venue.state, venue.country}) {
        if (part && !part->empty()) {
            text += ", " + *part;
        }
    }
    return venue.category == nullptr ? text : text + " (" + venue.category->shortName + ")";
}

std::string tagsText(const FeedPost& post) {
    std::string text;
    for (const auto& tag : post.tags) {
        text += (text.empty() ? "" : ", ") + tag->name + " (" + countText(tag->count, "post") + ")";
    }
    return text;
}

void addLinks(std::vector<std::string>& lines, const std::string& text,
              const std::vector<std::shared_ptr<KLEntity>>& entities) {
    for (const auto& entity : entities) {
        lines.push_back(stretchOf(text, entity->range) + " → " + entity->applicationLink());
    }
}

/// The author with the identifier, the byline, channel, venue, music, tags and links.
Lines detailsOf(const FeedPost& post, std::size_t indent) {
    std::vector<std::string> lines;
    if (post.author->userId) {
        lines.push_back("by " + nameOf(*post.author) + ", user " + *post.author->userId);
    }
    if (post.byline != nullptr) {
        lines.push_back(post.byline->text);
        addLinks(lines, post.byline->text, post.byline->entities);
    }
    if (post.channel) {
        lines.push_back("in " + *post.channel);
    }
    if (post.venue != nullptr) {
        lines.push_back("at " + venueText(*post.venue) + ", venue " +
                        post.venue->foursquareVenueId);
    }
    if (post.audio != nullptr) {
        lines.push_back("♪ " + post.audio->trackName + " – " + post.audio->artistName);
    }
    if (!post.tags.empty()) {
        lines.push_back(tagsText(post));
    }
    addLinks(lines, post.post->caption.value_or(""), post.entities);
    Lines shown;
    for (const std::string& line : lines) {
        shown.emplace_back(std::string(indent, ' ') + fitted(indent, printable(line)), Style::Dim);
    }
    return shown;
}

std::string namesIn(const KLPagedData& users) {
    std::string names;
    for (const auto& user : elementsOf<FeedUser>(users)) {
        names += (names.empty() ? "" : ", ") + nameOf(*user) +
                 (user->userId ? " (" + *user->userId + ")" : "");
    }
    return names;
}

/// The kind of a card, and its text.
std::pair<std::string, std::string> described(const KLFeedInsert& insert) {
    if (const auto* action = dynamic_cast<const KLUrlAction*>(&insert)) {
        return {"action", action->title + " – " + action->actionTitle + ": " +
                              action->actionUrl.absoluteString()};
    }
    if (const auto* mosaic = dynamic_cast<const KLPostsMosaic*>(&insert)) {
        return {"posts", mosaic->title + " – " + mosaic->subtitle + ": " +
                             countText(mosaic->posts->count(), "post")};
    }
    if (const auto* mosaic = dynamic_cast<const KLUserMosaic*>(&insert)) {
        return {"people",
                mosaic->title + " – " + mosaic->subtitle + ": " + namesIn(*mosaic->users)};
    }
    return {dynamic_cast<const KLSolicitation*>(&insert) != nullptr ? "prompt" : "unknown", ""};
}

/// The text behind `head`, broken between words to stay in its column, which begins below the head
/// where that takes half of the terminal.
void addWrapped(Lines& lines, std::string head, const std::string& text) {
    const auto columns = Terminal::columns();
    if (!columns) {
        lines.push_back(head + text);
        return;
    }
    std::size_t indent = displayWidth(head);
    if (*columns < 2 * indent) {
        indent = narrowIndent;
        lines.push_back(std::exchange(head, std::string(indent, ' ')));
    }
    for (const std::string& line : wrappedLines(text, *columns - std::min(*columns, indent))) {
        lines.push_back(std::exchange(head, std::string(indent, ' ')) + line);
    }
}

std::string scalarText(const ParameterValue& value) {
    struct Text {
        std::string operator()(std::nullptr_t) const { return "-"; }
        std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(std::uint64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return Number::of(number).stringValue(); }
        std::string operator()(const std::string& text) const { return text; }
        std::string operator()(const ParameterList&) const { return "..."; }
        std::string operator()(const Parameters&) const { return ""; }
    };
    return std::visit(Text(), value.held());
}

} // namespace

Lines linesOf(const FeedUser& shown) {
    Lines lines = {nameOf(shown)};
    if (shown.userId) {
        lines.push_back("user " + *shown.userId);
    }
    if (const auto& loops = shown.user->loopData) {
        const double velocity = loops->velocity.doubleValue();
        const std::uint64_t count = loops->count.uint64Value();
        lines.push_back(groupedText(count) + " " + plural(count, "loop") + ", " +
                        formatted(std::abs(velocity) < 1e15 ? "%.1f" : "%g", velocity) +
                        " more each second");
    }
    return lines;
}

Lines linesOf(const KLVenue& venue) {
    Lines lines = {venueText(venue)};
    if (venue.latitude != 0 || venue.longitude != 0) {
        lines.push_back(formatted("%.4f, %.4f", venue.latitude, venue.longitude));
    }
    return lines;
}

Lines linesOf(const KLVideoUpload& upload) {
    std::string line = "video " + upload.mediaId;
    if (upload.processingInfo) {
        line += ": " + std::string(rawValue(upload.processingInfo->state));
    }
    if (upload.size) {
        line += ", " + countText(*upload.size, "byte");
    }
    return {line};
}

Lines linesOf(const KLChannel& channel, bool details) {
    Lines lines = {channel.name + (channel.following ? " (followed)" : "")};
    if (channel.channelDescription) {
        lines.push_back(*channel.channelDescription);
    }
    if (channel.timelineData != nullptr) {
        const Lines posts = linesOf(elementsOf<FeedPost>(*channel.timelineData), details);
        lines.insert(lines.end(), posts.begin(), posts.end());
    }
    return lines;
}

Lines linesOf(const std::vector<std::shared_ptr<KLChannel>>& channels) {
    Lines lines;
    for (const auto& channel : channels) {
        Line line(padded(channel->channelId, 4));
        line.add(padded(channel->name, 16) + " ", Style::Bold);
        line.add(fitted(line.displayWidth(), printable(channel->channelDescription.value_or(""))));
        lines.push_back(line);
    }
    return lines.empty() ? Lines{"There are no channels."} : lines;
}

Lines linesOf(const std::vector<std::shared_ptr<FeedPost>>& posts, bool details) {
    Widths widths;
    for (const auto& shown : posts) {
        widths.id = std::max(widths.id, displayWidth(idOf(*shown)));
        widths.name = std::max(widths.name, displayWidth(nameOf(*shown->author)));
        widths.loops = std::max(widths.loops, displayWidth(loopsText(shown->post->user)));
    }
    widths.areNarrow =
        isNarrowerThan(widths.id + widths.name + widths.loops + widthBetween + leastCaptionWidth);
    Lines lines;
    const auto add = [&lines](const Lines& more) {
        lines.insert(lines.end(), more.begin(), more.end());
    };
    for (const auto& shown : posts) {
        add(linesOf(*shown, widths));
        if (details) {
            add(detailsOf(*shown, widths.areNarrow ? narrowIndent : detailIndent));
        }
    }
    return lines;
}

Lines linesOf(const std::vector<std::shared_ptr<KLFeedInsert>>& cards) {
    Lines lines;
    for (const auto& card : cards) {
        const auto [kind, text] = described(*card);
        addWrapped(lines,
                   padded(printable(card->reference), 18) + " " + padded(kind, 8) + " " +
                       (card->closeable ? "×" : " ") + " ",
                   printable(text));
    }
    return lines.empty() ? Lines{"This feed has no cards."} : lines;
}

Lines linesOf(const std::vector<std::shared_ptr<SoundboardSound>>& sounds) {
    Lines lines;
    for (const auto& sound : sounds) {
        lines.push_back(padded(sound->soundId, 10) + (sound->featured ? " ★ " : "   ") +
                        sound->name);
    }
    return lines.empty() ? Lines{"The soundboard is empty."} : lines;
}

Lines linesOf(const Parameters& fields, const std::string& indent) {
    Lines lines;
    for (const auto& [name, value] : fields) {
        lines.push_back(indent + name + ": " + scalarText(value));
        if (const auto* inner = std::get_if<Parameters>(&value.held())) {
            const Lines more = linesOf(*inner, indent + "  ");
            lines.insert(lines.end(), more.begin(), more.end());
        }
    }
    return lines;
}

} // namespace KeloHost
