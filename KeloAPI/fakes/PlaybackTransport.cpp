#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/fakes/internal/CassetteContents.hpp>
#include <KeloAPI/fakes/PlaybackTransport.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/json/internal/JsonWriter.hpp>

#include <algorithm>
#include <map>
#include <utility>

namespace KeloAPI::fakes {

namespace {

std::string lineOf(const RecordedRequest& request) {
    return std::string(name(request.method)) + " " + request.url;
}

/// Method, path and query.
std::string routeOf(const RecordedRequest& request) {
    const auto url = URL::parse(request.url);
    std::string route = std::string(name(request.method)) + " ";
    if (url) {
        route += url->path();
        route += url->query() ? "?" + *url->query() : "";
    }
    return route;
}

/// As much of a body as is read in an error's text.
std::string shownBody(const RecordedBody& body) {
    constexpr std::size_t maxShown = 300;
    if (body.tooLong || !jsonText(ParameterValue(body.bytes))) {
        const std::size_t size = body.tooLong ? body.tooLong->size : body.bytes.size();
        return std::to_string(size) + " bytes";
    }
    return body.bytes.size() <= maxShown ? "'" + body.bytes + "'"
                                         : "'" + body.bytes.substr(0, maxShown) + "' and more";
}

Error cassetteError(CassetteErrorCode code, const std::string& message) {
    return Error::withMessage(CassetteErrorDomain, static_cast<std::int64_t>(code), message);
}

ScriptedAnswer answerOf(const RecordedExchange& exchange) {
    if (!exchange.response) {
        return ScriptedAnswer::failure(*exchange.error);
    }
    const RecordedResponse& response = *exchange.response;
    if (response.body.tooLong) {
        return ScriptedAnswer::failure(
            cassetteError(CassetteErrorCode::BodyNotKept,
                          "the response to " + lineOf(exchange.request) + " has " +
                              std::to_string(response.body.tooLong->size) +
                              " bytes, more than the cassette has kept"));
    }
    ScriptedAnswer answer;
    answer.statusCode = response.statusCode;
    answer.headerFields = response.headerFields;
    answer.body = response.body.bytes;
    answer.error = exchange.error;
    answer.expectedContentLength = response.expectedContentLength;
    answer.url = URL::parse(response.url);
    return answer;
}

} // namespace

struct PlaybackTransport::State {
    State(const Cassette::Contents& contents, Playback kind)
        : playback(kind)
        , maxBodyBytes(contents.maxBodyBytes)
        , exchanges(contents.finished())
        , isPlayed(exchanges.size())
        , blanker(contents.secretNames()) {
        for (std::size_t place = 0; place < exchanges.size(); ++place) {
            routes[routeOf(exchanges[place].request)].push_back(place);
        }
    }

    /// The place of the exchange that `request` is to get, or why it gets none.
    Result<std::size_t> placeOf(const RecordedRequest& request) {
        return playback == Playback::Strict ? nextPlace(request) : placeOnRoute(request);
    }

    Result<std::size_t> nextPlace(const RecordedRequest& request) const {
        const std::size_t place = next;
        if (place == exchanges.size()) {
            return cassetteError(CassetteErrorCode::UnexpectedRequest,
                                 "behind the last of " + std::to_string(place) +
                                     " exchanges came " + lineOf(request));
        }
        const RecordedRequest& expected = exchanges[place].request;
        const std::string begin = "exchange " + std::to_string(place + 1) + ": expected ";
        if (lineOf(request) != lineOf(expected)) {
            return cassetteError(CassetteErrorCode::UnexpectedRequest,
                                 begin + lineOf(expected) + ", came " + lineOf(request));
        }
        if (request.body != expected.body) {
            return cassetteError(CassetteErrorCode::UnexpectedRequest,
                                 begin + lineOf(expected) + " with the body " +
                                     shownBody(expected.body) + ", came " +
                                     shownBody(request.body));
        }
        return place;
    }

    Result<std::size_t> placeOnRoute(const RecordedRequest& request) const {
        const std::string route = routeOf(request);
        const auto found = routes.find(route);
        if (found != routes.end()) {
            const auto& places = found->second;
            const auto unplayed = std::find_if(places.begin(), places.end(),
                                               [&](std::size_t place) { return !isPlayed[place]; });
            return unplayed == places.end() ? places.back() : *unplayed;
        }
        return cassetteError(CassetteErrorCode::UnexpectedRequest,
                             "expected " + expectedRoutes() + ", came " + route);
    }

    std::string expectedRoutes() const {
        constexpr std::size_t maxShown = 10;
        std::string text;
        std::size_t count = 0;
        for (const auto& [route, places] : routes) {
            if (count++ < maxShown) {
                text += (text.empty() ? "" : " or ") + route;
            }
        }
        return count <= maxShown
                   ? text
                   : text + " or one of " + std::to_string(count - maxShown) + " more";
    }

    /// What the request is answered with.
    ScriptedAnswer answer(const URLRequest& request) {
        const auto place = placeOf(blankedRequest(request, blanker, maxBodyBytes));
        if (!place) {
            unexpected.push_back(place.error().localizedDescription());
            return ScriptedAnswer::failure(place.error());
        }
        isPlayed[place.value()] = true;
        next = place.value() + 1;
        return answerOf(exchanges[place.value()]);
    }

    const Playback playback;
    const std::size_t maxBodyBytes;
    const std::vector<RecordedExchange> exchanges;
    std::map<std::string, std::vector<std::size_t>> routes;
    mutable std::mutex mutex;
    std::vector<bool> isPlayed;
    /// The place of the exchange whose turn it is in the strict order.
    std::size_t next = 0;
    Blanker blanker;
    std::vector<std::string> unexpected;
    std::size_t started = 0;
    ScriptedTransport transport;
};

PlaybackTransport::PlaybackTransport(const std::shared_ptr<const Cassette>& cassette,
                                     Playback playback)
    : _state([&] {
        require(cassette != nullptr, "a playback needs a cassette");
        return std::make_unique<State>(*cassette->_contents, playback);
    }()) {}

PlaybackTransport::~PlaybackTransport() = default;

std::vector<std::string> PlaybackTransport::unexpectedRequests() const {
    const std::lock_guard lock(_state->mutex);
    return _state->unexpected;
}

std::size_t PlaybackTransport::unplayedCount() const {
    const std::lock_guard lock(_state->mutex);
    return static_cast<std::size_t>(
        std::count(_state->isPlayed.begin(), _state->isPlayed.end(), false));
}

std::shared_ptr<Exchange> PlaybackTransport::start(const URLRequest& request,
                                                   std::shared_ptr<ExchangeObserver> observer,
                                                   TransferKind kind) {
    const std::lock_guard lock(_state->mutex);
    auto exchange = _state->transport.start(request, std::move(observer), kind);
    _state->transport.answerRequest(_state->started++, _state->answer(request));
    return exchange;
}

} // namespace KeloAPI::fakes
