#pragma once

#include <KeloAPI/base/Object.hpp>

#include <string>
#include <utility>

namespace KeloAPI {

/// A card between the posts of a feed. Does not change once made.
class KELO_API KLFeedInsert : public Object {
public:
    /// Stores both as given.
    KLFeedInsert(std::string name, bool mayClose)
        : reference(std::move(name))
        , closeable(mayClose) {}

    /// "reference": the service's name of the insert.
    const std::string reference;
    /// "closeable": whether the user may dismiss it.
    const bool closeable;
};

} // namespace KeloAPI
