#include "PostDetails.hpp"

#include "FeedPost.hpp"
#include "Stretch.hpp"
#include "TextWidth.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

namespace KeloHost {

using namespace KeloAPI;

namespace {

std::string tagsText(const FeedPost& post) {
    std::string text;
    for (const auto& tag : post.tags) {
        text += (text.empty() ? "" : ", ") + tag->name() + " (" + std::to_string(tag->count) +
                " posts)";
    }
    return text;
}

std::string linkText(const std::string& text, const KLEntity& entity) {
    return stretchOf(text, entity.range) + " → " + entity.applicationLink();
}

} // namespace

std::string venueText(const KLVenue& venue) {
    std::string text = venue.name();
    for (const auto& part : {venue.address, venue.city, venue.state, venue.country}) {
        if (part && !part->empty()) {
            text += ", " + *part;
        }
    }
    if (venue.category != nullptr) {
        text += " (" + venue.category->shortName() + ")";
    }
    return printable(text);
}

std::vector<std::string> detailLines(const FeedPost& post) {
    std::vector<std::string> lines;
    if (post.byline != nullptr) {
        lines.push_back(post.byline->text());
        for (const auto& entity : post.byline->entities) {
            lines.push_back(linkText(post.byline->text(), *entity));
        }
    }
    if (post.channel) {
        lines.push_back("in " + *post.channel);
    }
    if (post.venue != nullptr) {
        lines.push_back("at " + venueText(*post.venue) + ", venue " +
                        post.venue->foursquareVenueId());
    }
    if (post.audio != nullptr) {
        lines.push_back("♪ " + post.audio->trackName + " – " + post.audio->artistName);
    }
    if (!post.tags.empty()) {
        lines.push_back(tagsText(post));
    }
    for (const auto& entity : post.entities) {
        lines.push_back(linkText(post.post->caption.value_or(""), *entity));
    }
    for (std::string& line : lines) {
        line = printable(line);
    }
    return lines;
}

} // namespace KeloHost
