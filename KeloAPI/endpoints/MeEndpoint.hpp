#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>

namespace KeloAPI {

class KLWatchUser;

/// What `MeEndpoint::get` brings.
struct MeSuccess {
    /// The signed-in user; never null.
    std::shared_ptr<KLWatchUser> user;
};

using MeResult = Outcome<MeSuccess>; ///< How `MeEndpoint::get` ended.

/// Reads the signed-in user: GET users/me.
class KELO_API MeEndpoint : public Endpoint {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<MeEndpoint> create();
    /// On a session of the caller's choice; a null one stops the process.
    static std::shared_ptr<MeEndpoint> create(std::shared_ptr<Session> session);

    /// The completion runs on the main queue. A response without error and without a user stops the
    /// process: the service rules it out.
    void get(std::function<void(const MeResult& result)> completion);

protected:
    MeEndpoint(Key key, std::shared_ptr<Session> session); ///< For derived classes, through `make`.
};

} // namespace KeloAPI
