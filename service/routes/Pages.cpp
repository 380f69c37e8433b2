#include "service/routes/Pages.hpp"

#include "service/Encoding.hpp"
#include "service/routes/Guard.hpp"

#include <algorithm>
#include <limits>
#include <vector>

namespace KeloService {
namespace {

constexpr std::int64_t usualSize = 20;
constexpr std::int64_t largestSize = 1000;
/// Keeps offsets from overflowing.
constexpr std::int64_t lastPage = 1000000000;

/// Where a post stands in a feed.
struct Position {
    std::int64_t key = 0;
    std::int64_t postId = 0;
};

/// Every post of a feed comes after it.
constexpr Position beginning = {std::numeric_limits<std::int64_t>::max(),
                                std::numeric_limits<std::int64_t>::max()};

/// The two ends of a page. Clients send the anchor of a page back for the page behind it and, as
/// "backAnchor", for the page before it; so an anchor has to know both ends.
struct Anchor {
    Position first;
    Position last;
};

/// Reads runs of neighbours in a feed.
class FeedReader {
public:
    using Rows = std::vector<Position>;

    FeedReader(const Context& context, const Feed& feed, std::int64_t size)
        : database_(context.database)
        , feed_(feed)
        , size_(size) {}

    Rows fromOffset(std::int64_t offset) const {
        return select(descending() + " LIMIT ?2 OFFSET ?3", size_, offset);
    }
    /// The posts that follow the position.
    Rows after(const Position& position) const {
        return select(compared("<") + descending() + " LIMIT ?4", position.key, position.postId,
                      size_);
    }
    /// The posts that stand just before the position.
    Rows before(const Position& position) const {
        Rows rows = select(compared(">") + " ORDER BY " + feed_.key + " ASC, p.postId ASC LIMIT ?4",
                           position.key, position.postId, size_);
        std::reverse(rows.begin(), rows.end());
        return rows;
    }
    /// Whether posts stand before ('>') or behind ('<') the position.
    bool hasMore(const char* comparison, const Position& position) const {
        return !select(compared(comparison) + " LIMIT 1", position.key, position.postId).empty();
    }

private:
    template <typename... Values>
    Rows select(const std::string& rest, const Values&... values) const {
        Query query = database_.query("SELECT " + feed_.key + ", p.postId " + feed_.source + rest,
                                      feed_.argument, values...);
        Rows rows;
        while (query.next()) {
            rows.push_back({query.integer(0), query.integer(1)});
        }
        return rows;
    }
    std::string descending() const { return " ORDER BY " + feed_.key + " DESC, p.postId DESC"; }
    std::string compared(const std::string& comparison) const {
        return " AND (" + feed_.key + ", p.postId) " + comparison + " (?2, ?3)";
    }

    Database& database_;
    const Feed& feed_;
    std::int64_t size_;
};

ServiceError unknownAnchor() {
    return {400, "This anchor is not known"};
}

/// `direction` is "next" or "back": the two must not be taken for one another.
std::string encodeAnchor(const std::string& name, const char* direction, const Anchor& ends) {
    const Json anchor = {direction,     ends.first.key,   ends.first.postId,
                         ends.last.key, ends.last.postId, name};
    return encodeBase64(anchor.dump());
}

Anchor decodeAnchor(const std::string& name, const std::string& text, bool backIsGood) {
    const Json anchor = Json::parse(decodeBase64(text).value_or(""), nullptr, false);
    const bool isAnchor = anchor.is_array() && anchor.size() == 6 && anchor[5] == name &&
                          std::all_of(anchor.begin() + 1, anchor.begin() + 5,
                                      [](const Json& part) { return part.is_number_integer(); });
    if (!isAnchor || !(anchor[0] == "next" || (anchor[0] == "back" && backIsGood))) {
        throw unknownAnchor();
    }
    return {{anchor[1], anchor[2]}, {anchor[3], anchor[4]}};
}

/// The page whose last post has the id that the text is.
Anchor numberAnchor(const FeedReader& reader, const std::string& text) {
    const auto last = parseNumber<std::int64_t>(text);
    if (!last) {
        throw unknownAnchor();
    }
    const auto page = reader.before({*last, *last - 1});
    return {page.empty() ? beginning : page.front(), {*last, *last}};
}

FeedReader::Rows anchoredRows(const Call& call, const FeedReader& reader, const Feed& feed,
                              const std::string& name) {
    const bool isText = feed.paging == Paging::TextAnchor;
    if (const auto anchor = call.request.parameter("anchor")) {
        return reader.after(
            (isText ? decodeAnchor(name, *anchor, false) : numberAnchor(reader, *anchor)).last);
    }
    if (const auto anchor = call.request.parameter("backAnchor")) {
        return reader.before(
            (isText ? decodeAnchor(name, *anchor, true) : numberAnchor(reader, *anchor)).first);
    }
    return reader.after(beginning);
}

void addAnchors(Json& page, const FeedReader& reader, const FeedReader::Rows& rows,
                const Feed& feed, const std::string& name) {
    if (rows.empty()) {
        return;
    }
    const bool isText = feed.paging == Paging::TextAnchor;
    const Anchor ends{rows.front(), rows.back()};
    if (reader.hasMore("<", ends.last)) {
        page["anchor"] = isText ? Json(encodeAnchor(name, "next", ends)) : Json(ends.last.postId);
    }
    if (isText && reader.hasMore(">", ends.first)) {
        page["backAnchor"] = encodeAnchor(name, "back", ends);
    }
}

void addNumbers(Json& page, std::int64_t number, std::int64_t size, std::int64_t count) {
    if (number * size < count) {
        page["nextPage"] = number + 1;
        page["nextAfter"] = number * size;
    }
    if (number > 1 && count > 0) {
        page["previousPage"] = std::min(number - 1, (count + size - 1) / size);
    }
}

std::vector<std::int64_t> idsOf(const FeedReader::Rows& rows) {
    std::vector<std::int64_t> ids;
    for (const Position& row : rows) {
        ids.push_back(row.postId);
    }
    return ids;
}

} // namespace

Json readPage(const Call& call, const Context& context, const Feed& feed, const std::string& name,
              const std::optional<std::int64_t>& user) {
    const auto size =
        std::clamp<std::int64_t>(readInteger(call, "size", usualSize), 1, largestSize);
    const auto count =
        context.database.number("SELECT count(*) " + feed.source, feed.argument).value();
    const FeedReader reader(context, feed, size);
    Json page{{"title", feed.title}, {"count", count}, {"displayCount", count}, {"size", size}};
    FeedReader::Rows rows;
    if (feed.paging == Paging::Numbers) {
        const auto number = std::clamp<std::int64_t>(readInteger(call, "page", 1), 1, lastPage);
        rows = reader.fromOffset((number - 1) * size);
        addNumbers(page, number, size, count);
    } else {
        rows = anchoredRows(call, reader, feed, name);
        addAnchors(page, reader, rows, feed, name);
    }
    page["records"] = postRecords(context, idsOf(rows), readView(call, user));
    return page;
}

} // namespace KeloService
