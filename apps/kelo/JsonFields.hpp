#pragma once

#include <KeloAPI/json/Parameters.hpp>

#include <optional>

namespace KeloAPI {
class KLChannel;
class KLEntity;
class KLFeedInsert;
class KLTag;
class KLVenue;
class KLVenueCategory;
class KLWatchUser;
class LoopData;
class Number;
class PostThumbnail;
class SoundboardSound;
} // namespace KeloAPI

namespace KeloHost {

class FeedPost;

// The fields of models under their own names; null for an absent one.
KeloAPI::Parameters fieldsOf(const KeloAPI::KLWatchUser& user);
KeloAPI::Parameters fieldsOf(const FeedPost& post);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLEntity& entity);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLTag& tag);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLVenue& venue);
KeloAPI::Parameters fieldsOf(const KeloAPI::KLVenueCategory& category);
KeloAPI::Parameters fieldsOf(const KeloAPI::LoopData& loops);
KeloAPI::Parameters fieldsOf(const KeloAPI::PostThumbnail& thumbnail);
KeloAPI::Parameters fieldsOf(const KeloAPI::SoundboardSound& sound);
/// With the posts of its timeline, where that was read.
KeloAPI::Parameters fieldsOf(const KeloAPI::KLChannel& channel);
/// With the "kind" of the card and the fields of its class.
KeloAPI::Parameters fieldsOf(const KeloAPI::KLFeedInsert& insert);

KeloAPI::ParameterValue valueOf(const KeloAPI::Number& number);

template <class T>
KeloAPI::ParameterValue valueOf(const std::optional<T>& value) {
    return value ? KeloAPI::ParameterValue(*value) : KeloAPI::ParameterValue();
}

} // namespace KeloHost
