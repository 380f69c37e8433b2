#pragma once

#include <KeloAPI/base/Object.hpp>

#include <string>
#include <utility>

namespace KeloAPI {

/// A card between the posts of a feed. Does not change once made.
class KELO_API KLFeedInsert : public Object {
public:
    /// Stores both as given.
    KLFeedInsert(std::string reference, bool closeable)
        : _reference(std::move(reference))
        , _closeable(closeable) {}

    /// "reference": the service's name of the insert.
    const std::string& reference() const { return _reference; }
    /// "closeable": whether the user may dismiss it.
    bool closeable() const { return _closeable; }

private:
    std::string _reference;
    bool _closeable;
};

} // namespace KeloAPI
