#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

struct Channel {
    std::int64_t channelId = 0;
    std::string name;
    std::string description;
    std::string fontColor;
    std::string backgroundColor;
    std::string vanityUrl;
    std::int64_t created = 0;
};

/// The service's channels. Safe to use from any thread.
class Channels {
public:
    explicit Channels(Database& database)
        : database_(database) {}

    std::optional<Channel> find(std::int64_t channelId);

private:
    Database& database_;
};

} // namespace KeloService
