#pragma once

#include <KeloAPI/parsing/JsonParser.hpp>
#include <KeloAPI/platform/Export.hpp>
#include <KeloAPI/platform/Object.hpp>

#include <memory>
#include <optional>
#include <string>

namespace KeloAPI {

class KLWatchUser;

/// A user's repost of a post. One thread at a time.
class KELO_API KLRekelo final : public Object {
public:
    /// "repostId", sent as a number or as text.
    std::optional<std::string> rekeloId;
    /// Who reposted; null when that is not known.
    std::shared_ptr<KLWatchUser> user;

    KLRekelo() = default;
    ~KLRekelo() override;
};

/// Never throws. An object without "repostId" stops the process.
class KELO_API RekeloParser final : public JsonParser<KLRekelo> {
public:
    RekeloParser() = default;
    ~RekeloParser() override;
    std::shared_ptr<KLRekelo> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
