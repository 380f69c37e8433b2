#include "service/routes/Pages.hpp"

#include "service/http/Base64.hpp"

#include <algorithm>
#include <charconv>

namespace KeloService {
namespace {

constexpr std::int64_t usualSize = 20;
constexpr std::int64_t largestSize = 1000;

/// How much of likes and comments a record carries, unless the request wants less.
constexpr std::int64_t usualNested = 3;
constexpr std::int64_t mostNested = 10;

/// The two ends of a page. Clients send the anchor of a page back for the page behind it and, as
/// "backAnchor", for the page before it; so an anchor has to know both ends.
struct Anchor {
    Position first;
    Position last;
};

[[noreturn]] void refuseAnchor() {
    throw ServiceError(400, ErrorCode::badRequest, "This anchor is not known");
}

std::int64_t nested(const Request& request, const char* name) {
    return std::clamp<std::int64_t>(readInteger(request, name, usualNested), 0, mostNested);
}

std::optional<std::int64_t> integerOf(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

/// `direction` is "next" or "back": the two must not be taken for one another.
std::string encodeAnchor(const std::string& name, const std::string& direction,
                         const Slice& slice) {
    const Position& first = slice.rows.front();
    const Position& last = slice.rows.back();
    return encodeBase64(direction + '|' + std::to_string(first.key) + '|' +
                        std::to_string(first.postId) + '|' + std::to_string(last.key) + '|' +
                        std::to_string(last.postId) + '|' + name);
}

Anchor decodeAnchor(const std::string& name, const std::string& text, bool backIsGood) {
    const auto decoded = decodeBase64(text);
    std::string_view rest = decoded ? std::string_view(*decoded) : std::string_view();
    const auto part = [&rest] {
        const std::string_view found = rest.substr(0, rest.find('|'));
        rest.remove_prefix(std::min(rest.size(), found.size() + 1));
        return found;
    };
    const std::string_view direction = part();
    std::int64_t numbers[4] = {};
    for (std::int64_t& number : numbers) {
        const auto value = integerOf(part());
        if (!value) {
            refuseAnchor();
        }
        number = *value;
    }
    if (rest != name || !(direction == "next" || (direction == "back" && backIsGood))) {
        refuseAnchor();
    }
    return {{numbers[0], numbers[1]}, {numbers[2], numbers[3]}};
}

PageMetadata commonMetadata(Feeds& feeds, const Feed& feed, std::int64_t size) {
    PageMetadata metadata;
    metadata.title = feed.title;
    metadata.count = feeds.count(feed);
    metadata.size = size;
    return metadata;
}

Page finishPage(const Slice& slice, PageMetadata metadata) {
    Page page;
    page.metadata = std::move(metadata);
    for (const Position& row : slice.rows) {
        page.postIds.push_back(row.postId);
    }
    return page;
}

Page readNumberedPage(Feeds& feeds, const Feed& feed, const Request& request) {
    const std::int64_t size = pageSize(request);
    // Pages are counted from 1; the upper bound keeps the offset from overflowing.
    const std::int64_t number =
        std::clamp<std::int64_t>(readInteger(request, "page", 1), 1, 1000000000);
    const Slice slice = feeds.fromOffset(feed, (number - 1) * size, size);
    PageMetadata metadata = commonMetadata(feeds, feed, size);
    if (slice.moreAfter) {
        metadata.nextPage = number + 1;
        metadata.nextAfter = number * size;
    }
    const std::int64_t lastPage = (metadata.count + size - 1) / size;
    if (number > 1 && lastPage > 0) {
        metadata.previousPage = std::min(number - 1, lastPage);
    }
    return finishPage(slice, std::move(metadata));
}

Page readTextAnchoredPage(Feeds& feeds, const Feed& feed, const std::string& name,
                          const Request& request) {
    const std::int64_t size = pageSize(request);
    Slice slice;
    if (const auto anchor = request.parameter("anchor")) {
        slice = feeds.after(feed, decodeAnchor(name, *anchor, false).last, size);
    } else if (const auto backAnchor = request.parameter("backAnchor")) {
        slice = feeds.before(feed, decodeAnchor(name, *backAnchor, true).first, size);
    } else {
        slice = feeds.after(feed, std::nullopt, size);
    }
    PageMetadata metadata = commonMetadata(feeds, feed, size);
    if (slice.moreAfter) {
        metadata.anchor = encodeAnchor(name, "next", slice);
    }
    if (slice.moreBefore) {
        metadata.backAnchor = encodeAnchor(name, "back", slice);
    }
    return finishPage(slice, std::move(metadata));
}

/// The anchor is the last post's id: the page that ends there begins `size` posts earlier.
Slice beforePageEndingAt(Feeds& feeds, const Feed& feed, std::int64_t lastPostId,
                         std::int64_t size) {
    const Slice page = feeds.before(feed, {lastPostId, lastPostId - 1}, size);
    return page.rows.empty() ? page : feeds.before(feed, page.rows.front(), size);
}

Page readNumberAnchoredPage(Feeds& feeds, const Feed& feed, const Request& request) {
    const std::int64_t size = pageSize(request);
    const auto postIdOf = [](const std::string& text) {
        const auto postId = integerOf(text);
        if (!postId) {
            refuseAnchor();
        }
        return *postId;
    };
    Slice slice;
    if (const auto anchor = request.parameter("anchor")) {
        const std::int64_t last = postIdOf(*anchor);
        slice = feeds.after(feed, Position{last, last}, size);
    } else if (const auto backAnchor = request.parameter("backAnchor")) {
        slice = beforePageEndingAt(feeds, feed, postIdOf(*backAnchor), size);
    } else {
        slice = feeds.after(feed, std::nullopt, size);
    }
    PageMetadata metadata = commonMetadata(feeds, feed, size);
    if (slice.moreAfter) {
        metadata.anchor = slice.rows.back().postId;
    }
    return finishPage(slice, std::move(metadata));
}

} // namespace

std::int64_t readInteger(const Request& request, const char* name, std::int64_t otherwise) {
    const auto text = request.parameter(name);
    if (!text) {
        return otherwise;
    }
    const auto value = integerOf(*text);
    if (!value) {
        throw ServiceError(400, ErrorCode::badRequest, std::string(name) + " must be an integer");
    }
    return *value;
}

std::int64_t pageSize(const Request& request) {
    return std::clamp<std::int64_t>(readInteger(request, "size", usualSize), 1, largestSize);
}

PostView readView(const Request& request, const std::optional<Session>& session) {
    PostView view;
    view.viewerId = session ? std::optional(session->userId) : std::nullopt;
    view.mostComments = nested(request, "c_max");
    view.mostLikes = nested(request, "l_max");
    return view;
}

Page readPage(Feeds& feeds, const Feed& feed, const std::string& name, const Request& request) {
    switch (feed.paging) {
    case Paging::TextAnchor:
        return readTextAnchoredPage(feeds, feed, name, request);
    case Paging::NumberAnchor:
        return readNumberAnchoredPage(feeds, feed, request);
    default:
        return readNumberedPage(feeds, feed, request);
    }
}

} // namespace KeloService
