#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"
#include "TemporaryFolder.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/EndpointRequest.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace KeloTour {

using namespace KeloAPI;

namespace {

void textAnswer() {
    const auto endpoint = endpointAt("users/me");
    sent(endpoint->URLRequest().description() + ", to be read as text");
    const std::string text = readText(endpoint);
    came(std::to_string(text.size()) + " bytes: " + text.substr(0, 60) + " …");
    check(text.starts_with('{') && text.find("\"mara\"") != std::string::npos,
          "that is not the user");
}

void jsonBody() {
    const std::int64_t before = Control::lastRequest();
    const auto endpoint =
        endpointAt("sessions", {{"username", "kofi"}, {"password", "loop-the-loop"}});
    endpoint->setMethod(Method::POST);
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    sent(endpoint->URLRequest().description() + " with the user's name and password as JSON");
    const std::string text = readText(endpoint);
    came(text);
    check(text.find("\"kofi\"") != std::string::npos, "the user was not signed in");
    for (const auto& request : Control::requestsSince(before)) {
        if (request.path == "/sessions") {
            check(request.headers.at("Content-Type") == "application/json", "that was no JSON");
            return;
        }
    }
    throw StepFailed("the service did not receive it");
}

/// An endpoint that wants its answer uncompressed, so that its length is known from the start.
class PlainEndpoint : public Endpoint {
public:
    static std::shared_ptr<PlainEndpoint> create(const std::string& path, Parameters parameters) {
        auto endpoint = make<PlainEndpoint>(Api::session(SessionType::Authenticated));
        endpoint->setPath(path);
        endpoint->setParameters(std::move(parameters));
        return endpoint;
    }

    HeaderFields headerFields() const override {
        HeaderFields fields = Endpoint::headerFields();
        fields["Accept-Encoding"] = "identity";
        return fields;
    }

protected:
    using Endpoint::Endpoint;
};

std::string percent(double fraction) {
    return std::to_string(std::lround(fraction * 100)) + "%";
}

void progress() {
    const auto endpoint = PlainEndpoint::create("timelines/all", {{"size", 1000}});
    Inbox<Parsed<KLWatchPost>> inbox;
    const auto handle = send<PostParser>(endpoint, inbox);
    std::vector<double> fractions;
    handle->setProgressHandler(
        [&](EndpointRequest&, double fraction) { fractions.push_back(fraction); });
    const auto answer = inbox.next();
    check(!answer.error, "an error came");
    check(!fractions.empty(), "no progress was reported");
    came(std::to_string(answer.items.size()) + " posts; progress was reported " +
         std::to_string(fractions.size()) + " times, from " + percent(fractions.front()) + " to " +
         percent(fractions.back()));
    check(answer.items.size() == 1000, "there should be 1000");
    check(std::is_sorted(fractions.begin(), fractions.end()), "progress went back");
    check(fractions.front() > 0 && fractions.back() == 1, "progress should end at 100%");
}

void cancellation() {
    Control::addFault("/timelines/all", {{"type", "stall"}, {"afterBytes", 50'000}});
    Inbox<Parsed<KLWatchPost>> inbox;
    const auto handle =
        send<PostParser>(PlainEndpoint::create("timelines/all", {{"size", 1000}}), inbox);
    handle->setProgressHandler([](EndpointRequest& request, double) { request.cancel(); });
    const auto start = std::chrono::steady_clock::now();
    const auto answer = inbox.next();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    check(answer.error.has_value(), "the call succeeded");
    came("after the first bytes the server stalls, and the call is cancelled: " +
         answer.error->localizedDescription());
    check(isHTTPError(*answer.error, HTTPErrorCode::Cancelled), "that is another error");
    check(took.count() < 5, "it took too long");
    handle->cancel();
    check(inbox.staysEmpty(), "the completion was called again");
    note("the completion was called once; a second cancel did nothing");
    check(Control::allFaultsHappened(), "the server did not stall");
}

std::optional<Error> download(const std::string& path, const std::filesystem::path& file) {
    Inbox<std::optional<Error>> inbox;
    const auto endpoint = endpointAt(path);
    sent(endpoint->URLRequest().description() + ", to be kept as a file");
    endpoint->download(
        URL::fileURL(file.string()),
        [slot = inbox.slot()](const URL&, std::optional<Error> error) { slot(std::move(error)); });
    return inbox.next();
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void downloadedFile() {
    const TemporaryFolder folder;
    const auto file = folder.path() / "popular.json";
    const auto error = download("timelines/popular", file);
    check(!error, "an error came: " + (error ? error->description() : std::string()));
    const std::string text = contentOf(file);
    came(std::to_string(text.size()) + " bytes in the file");
    check(static_cast<bool>(JsonDocument::parse(text)), "the file is not complete");

    const auto refusal = download("timelines/nothing-here", file);
    check(refusal.has_value(), "a missing page became a file");
    came(refusal->localizedDescription());
    check(isHTTPError(*refusal, HTTPErrorCode::HTTPStatus) &&
              refusal->integer(HTTPStatusCodeKey) == 404,
          "that is another error");
    check(contentOf(file) == text, "the file was touched");
    const auto entries = std::distance(std::filesystem::directory_iterator(folder.path()), {});
    check(entries == 1, "there is litter beside the file");
    note("the file stayed as it was, and nothing lies beside it");
}

} // namespace

void tourRequests(Tour& tour) {
    tour.step("An answer as text", textAnswer);
    tour.step("Parameters as a JSON body", jsonBody);
    tour.step("Progress of a long answer", progress);
    tour.step("A call is cancelled", cancellation);
    tour.step("A download into a file, and one that fails", downloadedFile);
}

} // namespace KeloTour
