#pragma once

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
    /// The repost's identifier.
    std::optional<std::string> rekeloId;
    /// Who reposted; null when that is not known.
    std::shared_ptr<KLWatchUser> user;

    KLRekelo() = default;
    ~KLRekelo() override;
};

} // namespace KeloAPI
