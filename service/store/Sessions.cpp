#include "service/store/Sessions.hpp"

#include "service/store/Password.hpp"

namespace KeloService {
namespace {

constexpr const char* sessionSelection = "SELECT key, userId, username, expired, captchaToken "
                                         "FROM sessions JOIN users USING (userId) ";

Session readSession(const Query& query) {
    Session session;
    session.key = query.text(0);
    session.userId = query.integer(1);
    session.username = query.text(2);
    session.expired = query.boolean(3);
    if (!query.isNull(4)) {
        session.captchaToken = query.text(4);
    }
    return session;
}

} // namespace

std::optional<Session> Sessions::find(const std::string& key) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(sessionSelection) + "WHERE key = ?1");
    return query.bind(key).next() ? std::optional(readSession(query)) : std::nullopt;
}

std::vector<Session> Sessions::list() {
    const auto lock = database_.lock();
    std::vector<Session> sessions;
    Query query = database_.query(std::string(sessionSelection) + "ORDER BY key");
    while (query.next()) {
        sessions.push_back(readSession(query));
    }
    return sessions;
}

std::string Sessions::add(std::int64_t userId, std::optional<std::string> key) {
    std::string chosen = key ? *key : randomText(16);
    const auto lock = database_.lock();
    database_.query("INSERT OR REPLACE INTO sessions (key, userId) VALUES (?1, ?2)")
        .bind(chosen, userId)
        .run();
    return chosen;
}

bool Sessions::expire(const std::string& key) {
    const auto lock = database_.lock();
    database_.query("UPDATE sessions SET expired = 1 WHERE key = ?1").bind(key).run();
    return changes() != 0;
}

std::optional<std::string> Sessions::demandCaptcha(const std::string& key) {
    const std::string token = randomText(12);
    const auto lock = database_.lock();
    database_.query("UPDATE sessions SET captchaToken = ?2 WHERE key = ?1").bind(key, token).run();
    return changes() == 0 ? std::nullopt : std::optional(token);
}

bool Sessions::isCaptchaOpen(const std::string& token) {
    const auto lock = database_.lock();
    return database_.query("SELECT 1 FROM sessions WHERE captchaToken = ?1").bind(token).next();
}

bool Sessions::solveCaptcha(const std::string& token) {
    const auto lock = database_.lock();
    database_.query("UPDATE sessions SET captchaToken = NULL WHERE captchaToken = ?1")
        .bind(token)
        .run();
    return changes() != 0;
}

int Sessions::changes() {
    Query query = database_.query("SELECT changes()");
    query.next();
    return static_cast<int>(query.integer(0));
}

} // namespace KeloService
