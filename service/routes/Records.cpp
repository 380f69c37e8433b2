#include "service/routes/Records.hpp"

#include "service/Clock.hpp"

#include <algorithm>
#include <utility>

namespace KeloService {
namespace {

Json plainValue(const Query& row, int column) {
    switch (row.type(column)) {
    case SQLITE_INTEGER:
        return row.integer(column);
    case SQLITE_FLOAT:
        return row.real(column);
    default:
        return row.text(column);
    }
}

/// Where the value of this name lies in the record.
Json& place(Json& record, std::string name) {
    if (name.find('.') == std::string::npos) {
        return record[name];
    }
    std::replace(name.begin(), name.end(), '.', '/');
    return record[Json::json_pointer("/" + name)];
}

void addValue(Json& record, const Query& row, int column, const Context& context) {
    std::string name = row.name(column);
    const char form = name.back();
    if (form != '?' && form != '@' && form != '/') {
        place(record, std::move(name)) = plainValue(row, column);
        return;
    }
    name.pop_back();
    Json& value = place(record, std::move(name));
    if (form == '?') {
        value = row.integer(column) != 0;
    } else if (form == '@') {
        value = dateText(row.integer(column));
    } else {
        value = context.baseUrl + row.text(column);
    }
}

} // namespace

Json record(const Query& row, const Context& context) {
    Json record = Json::object();
    for (int column = 0; column < row.columns(); ++column) {
        if (!row.isNull(column)) {
            addValue(record, row, column, context);
        }
    }
    return record;
}

Json wholeList(Json records) {
    const std::size_t count = records.size();
    return {{"count", count}, {"records", std::move(records)}};
}

std::string markSelection(const std::string& noun) {
    const std::string extra = noun == "comment" ? "m.comment, " : "";
    return "SELECT m." + noun + R"sql(Id, m.created AS "created@", )sql" + extra + R"sql(
    u.userId, u.username, u.avatarPath AS "avatarUrl/", u.verified AS "verified?"
FROM )sql" +
           noun + "s m JOIN users u USING (userId) WHERE m.postId = ?1 ";
}

} // namespace KeloService
