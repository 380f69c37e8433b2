#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloTour {

using namespace KeloAPI;

namespace {

Error refusal() {
    Inbox<MeResult> inbox;
    sendMe(inbox);
    Error error = errorIn(inbox.next());
    came(error.description());
    return error;
}

void serviceError() {
    Control::addFault(
        "/users/me",
        {{"type", "error"}, {"code", 777}, {"message", "The service is being looked after"}});
    const Error error = refusal();
    check(error.code() == 777 && error.integer(KLAPIStatusCodeKey) == 777, "the code is lost");
    check(error.localizedDescription() == "The service is being looked after",
          "the message is lost");
    check(Control::allFaultsHappened(), "the service did not answer so");
}

void notJson() {
    Control::addFault("/users/me", {{"type", "body"}, {"body", "<html>It works!</html>"}});
    check(isHTTPError(refusal(), HTTPErrorCode::BadJson), "that is another error");
    check(Control::allFaultsHappened(), "the service did not answer so");
}

void badEnvelope(const char* body, const char* message) {
    Control::addFault("/users/me", {{"type", "body"}, {"body", body}});
    const Error error = refusal();
    check(error.code() == -1 && error.localizedDescription() == message, "that is another error");
    check(Control::allFaultsHappened(), "the service did not answer so");
}

void brokenEnvelopes() {
    badEnvelope("[1, 2, 3]", "Data section in response is missing");
    badEnvelope(R"({"data": 5})", "Malformed data section in response");
}

void brokenConnection() {
    Control::addFault("/users/me", {{"type", "close"}, {"afterBytes", 250}, {"abrupt", true}});
    check(isHTTPError(refusal(), HTTPErrorCode::ConnectionLost), "that is another error");
    check(Control::allFaultsHappened(), "the service did not break off");
}

void everythingIsWell() {
    Inbox<MeResult> inbox;
    sendMe(inbox);
    came("the user " + nameIn(inbox.next()));
}

} // namespace

void tourFailures(Tour& tour) {
    tour.step("An error of the service, with a code of its own", serviceError);
    tour.step("An answer that is no JSON", notJson);
    tour.step("Answers that are no envelope", brokenEnvelopes);
    tour.step("A connection that breaks off", brokenConnection);
    tour.step("After all that, a call goes through as before", everythingIsWell);
}

} // namespace KeloTour
