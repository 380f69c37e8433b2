#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/json/Parameters.hpp>
#include <KeloAPI/model/KLPagedData.hpp>

#include <concepts>
#include <memory>
#include <optional>
#include <vector>

namespace KeloAPI {
class KLByline;
class KLChannel;
class KLEntity;
class KLFeedInsert;
class KLPostAudioMetadata;
class KLRekelo;
class KLTag;
class KLVenue;
class KLVenueCategory;
class KLWatchUser;
class LoopData;
class Number;
class PostThumbnail;
class SoundboardSound;
class URL;
} // namespace KeloAPI

namespace KeloHost {

class FeedPost;

// The fields of models under their own names; null for an absent one.
KeloAPI::Parameters fieldsOf(const FeedPost& post);
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

} // namespace KeloHost
