#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>

namespace KeloAPI {

class KLWatchPost;
class TimelineEndpoint;

/// One page of a timeline, and the way to the pages beside it.
struct TimelineSuccess {
    /// In the order of the feed; none of them null.
    std::vector<std::shared_ptr<KLWatchPost>> posts;
    /// Null where there is no such page.
    std::shared_ptr<TimelineEndpoint> nextPage;
    /// Null without such a page; may lead to an empty one.
    std::shared_ptr<TimelineEndpoint> previousPage;
};

using TimelineResult = Outcome<TimelineSuccess>; ///< How `TimelineEndpoint::fetch` ended.

/// Reads one page of a timeline: GET timelines/ and the feed's path, with the parameters "c_max",
/// "c_overflow", "l_max", "l_overflow" and "size" (5 records unless changed).
class KELO_API TimelineEndpoint : public Endpoint {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`. A path that holds "timelines/"
    /// anywhere is complete; any other is put behind it.
    static std::shared_ptr<TimelineEndpoint> create(const std::string& path);
    /// Without a path and without parameters, on a session of the caller's choice; a null one stops
    /// the process.
    static std::shared_ptr<TimelineEndpoint> create(std::shared_ptr<Session> session);

    /// Sends the request; may be called again. The completion runs on the main queue. The pages'
    /// endpoints have the default parameters and the paging ones; what else was added here is not
    /// carried over.
    void fetch(std::function<void(const TimelineResult& result)> result);

protected:
    TimelineEndpoint(Key key, const std::string& path); ///< For derived classes, through `make`.
    /// For derived classes, through `make`.
    TimelineEndpoint(Key key, std::shared_ptr<Session> session);
};

} // namespace KeloAPI
