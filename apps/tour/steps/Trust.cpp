#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"
#include "TourHost.hpp"

#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloTour {

using namespace KeloAPI;

namespace {

void pinnedServer() {
    const auto chain = Certificates::chain();
    note(std::to_string(chain.size()) + " certificates are built into the library and pinned for " +
         TourHost::instance().host);
    check(chain.size() == 2, "there should be two");
    sent("GET https://" + TourHost::instance().host + "/_service/health, to be read as text");
    const std::string text = readText(endpointAt("_service/health"));
    came(text);
    check(text.find("\"ok\"") != std::string::npos, "the service is not well");
}

void unpinnedName() {
    const std::string host = TourHost::instance().host;
    const std::string port = host.substr(host.rfind(':'));
    const std::int64_t before = Control::lastRequest();
    Inbox<Parsed<KLWatchUser>> inbox;
    send<UserParser>(endpointAt("https://127.0.0.1" + port + "/users/me"), inbox);
    const auto answer = inbox.next();
    check(answer.error.has_value(), "the server was trusted");
    came(answer.error->localizedDescription());
    check(isHTTPError(*answer.error, HTTPErrorCode::ServerTrust), "that is another error");
    for (const auto& request : Control::requestsSince(before)) {
        check(request.path != "/users/me", "the request reached the server");
    }
    note("nothing of the request reached the server");
}

} // namespace

void tourTrust(Tour& tour) {
    tour.step("The server proves itself with a pinned certificate", pinnedServer);
    tour.step("The same server, under a name that is not pinned, is refused", unpinnedName);
}

} // namespace KeloTour
