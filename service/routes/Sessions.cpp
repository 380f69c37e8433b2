
#include "service/Encoding.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

constexpr const char* sessionSelection = R"sql(
SELECT key, userId, username, expired AS "expired?", '/captcha/' || captchaToken AS "captchaUrl/"
FROM sessions JOIN users USING (userId) )sql";

ServiceError unknownSession() {
    return {404, "There is no session with this key"};
}

Answer signIn(const Call& call, const Context& context) {
    const Json body = bodyObject(call);
    const std::string password = requiredText(body, "password");
    const std::string username = requiredText(body, "username");
    std::optional<std::int64_t> userId;
    {
        Query user = context.database.query(
            "SELECT userId, passwordSalt, passwordHash FROM users WHERE username = ?1", username);
        if (user.next() && hashPassword(password, user.text(1)) == user.text(2)) {
            userId = user.integer(0);
        }
    }
    if (!userId) {
        throw ServiceError(401, "The user name or the password is wrong",
                           ErrorCode::wrongCredentials);
    }
    const std::string key = addSession(context.database, *userId);
    return dataAnswer({{"key", key}, {"userId", *userId}, {"username", username}});
}

ServiceError unknownCaptcha() {
    return {404, "There is no such captcha"};
}

Answer showCaptcha(const Call& call, const Context& context) {
    const std::string& token = call.argument("token");
    if (!context.database.number("SELECT 1 FROM sessions WHERE captchaToken = ?1", token)) {
        throw unknownCaptcha();
    }
    Answer page;
    page.contentType = "text/html; charset=utf-8";
    page.body = "<!doctype html><title>Are you human?</title>"
                "<form method=\"post\" action=\"/captcha/" +
                token + "/solve\"><button>I am human</button></form>\n";
    return page;
}

Answer solveCaptcha(const Call& call, const Context& context) {
    if (context.database.run("UPDATE sessions SET captchaToken = NULL WHERE captchaToken = ?1",
                             call.argument("token")) == 0) {
        throw unknownCaptcha();
    }
    return dataAnswer({{"solved", true}});
}

Answer listSessions(const Call& /*call*/, const Context& context) {
    const std::string sql = std::string(sessionSelection) + "ORDER BY key";
    return jsonAnswer({{"sessions", records(context, sql)}});
}

Answer makeSession(const Call& call, const Context& context) {
    const Json body = bodyObject(call);
    const auto userId = findUser(context.database, requiredText(body, "username"));
    if (!userId) {
        throw ServiceError(404, "There is no user of this name");
    }
    const auto key = body.contains("key") ? std::optional(requiredText(body, "key")) : std::nullopt;
    const std::string sql = std::string(sessionSelection) + "WHERE key = ?1";
    return jsonAnswer(records(context, sql, addSession(context.database, *userId, key)).at(0));
}

Answer expireSession(const Call& call, const Context& context) {
    if (context.database.run("UPDATE sessions SET expired = 1 WHERE key = ?1",
                             call.argument("key")) == 0) {
        throw unknownSession();
    }
    return jsonAnswer();
}

Answer demandCaptcha(const Call& call, const Context& context) {
    const std::string token = randomText(12);
    if (context.database.run("UPDATE sessions SET captchaToken = ?2 WHERE key = ?1",
                             call.argument("key"), token) == 0) {
        throw unknownSession();
    }
    return jsonAnswer({{"token", token}, {"url", context.baseUrl + "/captcha/" + token}});
}

} // namespace

std::optional<std::int64_t> findUser(Database& database, const std::string& username) {
    return database.number("SELECT userId FROM users WHERE username = ?1", username);
}

std::string addSession(Database& database, std::int64_t userId,
                       const std::optional<std::string>& key) {
    std::string chosen = key ? *key : randomText(16);
    database.run("INSERT OR REPLACE INTO sessions (key, userId) VALUES (?1, ?2)", chosen, userId);
    return chosen;
}

void addSessionRoutes(Routes& routes) {
    routes.add("POST", "/sessions", signIn);
    routes.add("GET", "/captcha/:token", showCaptcha);
    for (const char* method : {"GET", "POST"}) {
        routes.add(method, "/captcha/:token/solve", solveCaptcha);
    }
    routes.add("GET", "/_service/sessions", listSessions);
    routes.add("POST", "/_service/sessions", makeSession);
    routes.add("POST", "/_service/sessions/:key/expire", expireSession);
    routes.add("POST", "/_service/sessions/:key/captcha", demandCaptcha);
}

} // namespace KeloService
