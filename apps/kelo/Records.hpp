#pragma once

#include "Color.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloHost {

class FeedPost;
class FeedUser;

// The fields of models under their own names; null for an absent one.
KeloAPI::Parameters fieldsOf(const FeedPost& post);
KeloAPI::Parameters fieldsOf(const FeedUser& user);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLByline& byline);
/// With the posts of its timeline, where that was read.
KeloAPI::Parameters fieldsOf(const KeloAPI::KLChannel& channel);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLEntity& entity);
/// With the "kind" of the card and the fields of its class.
KeloAPI::Parameters fieldsOf(const KeloAPI::KLFeedInsert& card);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLPostAudioMetadata& audio);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLRekelo& rekelo);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLTag& tag);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLVenue& venue);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLVenueCategory& category);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLWatchUser& user);
KeloAPI::Parameters fieldsOf(const KeloAPI::LoopData& loops);
KeloAPI::Parameters fieldsOf(const KeloAPI::PostThumbnail& thumbnail);
KeloAPI::Parameters fieldsOf(const KeloAPI::SoundboardSound& sound);

// The values of fields.
KeloAPI::ParameterValue valueOf(const KeloAPI::Number& number);
KeloAPI::ParameterValue valueOf(const KeloAPI::URL& url);
KeloAPI::ParameterValue valueOf(KeloAPI::Date date);

template <class T>
requires std::constructible_from<KeloAPI::ParameterValue, T> KeloAPI::ParameterValue
valueOf(const T& value) {
    return value;
}

template <class T>
KeloAPI::ParameterValue valueOf(const std::optional<T>& value) {
    return value ? valueOf(*value) : KeloAPI::ParameterValue();
}

template <class T>
KeloAPI::ParameterValue valueOf(const std::shared_ptr<T>& model) {
    return model == nullptr ? KeloAPI::ParameterValue() : fieldsOf(*model);
}

template <class T>
KeloAPI::ParameterValue valueOf(const std::vector<std::shared_ptr<T>>& models) {
    KeloAPI::ParameterList list;
    for (const auto& model : models) {
        list.emplace_back(fieldsOf(*model));
    }
    return list;
}

/// The elements of a list, all of them of this class.
template <class T>
std::vector<std::shared_ptr<T>> elementsOf(const KeloAPI::KLPagedData& list) {
    std::vector<std::shared_ptr<T>> elements;
    for (const auto& element : list) {
        elements.push_back(std::dynamic_pointer_cast<T>(element));
    }
    return elements;
}

/// What people read of something. Each is printed on a line of its own, without what a terminal
/// would take for a command.
using Lines = std::vector<Line>;

Lines linesOf(const FeedUser& user);
Lines linesOf(const KeloAPI::KLVenue& venue);
Lines linesOf(const KeloAPI::KLVideoUpload& upload);
/// A channel with the posts of its timeline, which are `FeedPost`s.
Lines linesOf(const KeloAPI::KLChannel& channel, bool details);
/// The channels: the identifier, the name and the description of each.
Lines linesOf(const std::vector<std::shared_ptr<KeloAPI::KLChannel>>& channels);
/// A page of posts, aligned, as wide as the terminal; with `details`, what stands beside each.
Lines linesOf(const std::vector<std::shared_ptr<FeedPost>>& posts, bool details);
Lines linesOf(const std::vector<std::shared_ptr<KeloAPI::SoundboardSound>>& sounds);
/// The cards of a feed: the reference of each, what it is and what it says.
Lines linesOf(const std::vector<std::shared_ptr<KeloAPI::KLFeedInsert>>& cards);
/// One line for each field, those of a field's own further in.
Lines linesOf(const KeloAPI::Parameters& fields, const std::string& indent);

} // namespace KeloHost
