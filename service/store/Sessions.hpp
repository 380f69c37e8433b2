#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

struct Session {
    std::string key;
    std::int64_t userId = 0;
    std::string username;
    bool expired = false;
    /// Present while the session is asked for a captcha.
    std::optional<std::string> captchaToken;
};

/// The session keys that users hold. Safe to use from any thread.
class Sessions {
public:
    explicit Sessions(Database& database)
        : database_(database) {}

    std::optional<Session> find(const std::string& key);
    std::vector<Session> list();
    /// Makes the key this user's, fresh and without demands, whatever it was before. An absent key
    /// is made up. Returns the key.
    std::string add(std::int64_t userId, std::optional<std::string> key = std::nullopt);
    /// False when there is no such session.
    bool expire(const std::string& key);
    /// The token of the captcha that the session now has to solve; absent when there is no such
    /// session.
    std::optional<std::string> demandCaptcha(const std::string& key);
    bool isCaptchaOpen(const std::string& token);
    /// False when no session waits for this captcha.
    bool solveCaptcha(const std::string& token);

private:
    int changes();

    Database& database_;
};

} // namespace KeloService
