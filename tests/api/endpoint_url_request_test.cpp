#include "support/EndpointMaking.hpp"
#include "support/ScriptedSession.hpp"

#include <KeloAPI/api/Endpoint.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

class EndpointURLRequest : public testing::ScriptedSessionTest {
protected:
    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
};

static_assert(std::is_same_v<decltype(Endpoint::create(nullptr)), std::shared_ptr<Endpoint>>);
static_assert(!std::is_copy_constructible_v<Endpoint> && !std::is_copy_assignable_v<Endpoint>);

namespace {

/// A host's own endpoint: its constructor is open to all, and asks for a key.
class HostsEndpoint : public Endpoint {
public:
    using ItsKey = Key;
    HostsEndpoint(Key key, std::shared_ptr<Session> session)
        : Endpoint(key, std::move(session)) {}

    template <class K>
    static constexpr bool makes = requires {
        K();
    };
    template <class K>
    static constexpr bool copies = requires(K key) {
        K(key);
    };
};

template <class E>
concept ShowsItsKey = requires {
    typename E::Key;
};
template <class E>
concept ShowsItsCompletion = requires {
    typename E::TextCompletion;
};

} // namespace

// A key is what an endpoint cannot be made without, and nobody gets one but from `make`.
static_assert(!ShowsItsKey<Endpoint> && ShowsItsCompletion<Endpoint>);
static_assert(!HostsEndpoint::makes<HostsEndpoint::ItsKey>);
static_assert(HostsEndpoint::copies<HostsEndpoint::ItsKey>);
static_assert(!testing::madeOnTheStack<HostsEndpoint, std::shared_ptr<Session>>);
static_assert(
    std::is_constructible_v<HostsEndpoint, HostsEndpoint::ItsKey, std::shared_ptr<Session>>);
// The library's own do not even take one from elsewhere.
static_assert(!testing::madeOnTheStack<Endpoint, std::shared_ptr<Session>>);
static_assert(!std::is_constructible_v<Endpoint, HostsEndpoint::ItsKey, std::shared_ptr<Session>>);
static_assert(testing::createdWith<Endpoint, std::shared_ptr<Session>>);

TEST_F(EndpointURLRequest, StartsWithTheDefaults) {
    EXPECT_EQ(endpoint->path(), "");
    EXPECT_EQ(endpoint->method(), Method::GET);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::URL);
    EXPECT_TRUE(endpoint->parameters().empty());
    EXPECT_EQ(endpoint->session(), session);
}

TEST_F(EndpointURLRequest, AppendsThePathToSchemeAndHost) {
    struct {
        const char* schema;
        const char* host;
        const char* path;
        const char* url;
    } const cases[] = {
        {"https://", "s.example", "users/me", "https://s.example/users/me"},
        {"https://", "s.example/v1/", "users/me", "https://s.example/v1/users/me"},
        {"https://", "s.example", "a/../b", "https://s.example/a/../b"},
        {"https://", "s.example", "", "https://s.example/"},
        {"https://", "s.example", "a b?c#d%e", "https://s.example/a%20b%3Fc%23d%25e"},
        // An empty scheme leaves the host alone.
        {"", "s.example", "users/me", "s.example/users/me"},
        // A path with "http" in it is the whole URL.
        {"https://", "s.example", "https://cdn.example/v?sig=1", "https://cdn.example/v?sig=1"},
        {"https://", "s.example", "see http", "none"},
        {"https://", "s.example", "users/http", "users/http"},
        {"https://", "s.example", "HTTP/x", "https://s.example/HTTP/x"},
    };
    for (const auto& one : cases) {
        delegate->schema = one.schema;
        delegate->host = one.host;
        endpoint->setPath(one.path);
        const auto url = endpoint->URLRequest().url;
        EXPECT_EQ(url ? url->absoluteString() : "none", one.url);
        EXPECT_EQ(endpoint->path(), one.path) << "the property stays as it was given";
    }
}

TEST_F(EndpointURLRequest, NoPieceOfThePathBecomesTheHost) {
    const std::pair<const char*, const char*> bases[] = {
        {"https://", ""},   {"https://", "?x"},   {"https://", "#x"}, {"https://", "/"},
        {"https://", ":1"}, {"https://", "u:p@"}, {"https:", ""},     {"https:", "/"},
        {"https:/", ""},    {"https:", "?x"},     {"https", ":"},     {"", ""}};
    for (const auto& [schema, host] : bases) {
        delegate->schema = schema;
        delegate->host = host;
        for (const char* path : {"users/me", "/users/me", "//users/me", "///users/me", ""}) {
            endpoint->setPath(path);
            const auto problem = endpoint->URLRequest().problem();
            ASSERT_TRUE(problem) << schema << host << ' ' << path;
            EXPECT_TRUE(isHTTPError(*problem, HTTPErrorCode::UnsupportedURL));
        }
    }
}

TEST_F(EndpointURLRequest, ABaseThatIsNoURLStopsTheProcess) {
    delegate->host = "not a host";
    endpoint->setPath("users/me");
    EXPECT_DEATH(static_cast<void>(endpoint->URLRequest()),
                 "contract violated: scheme and host of a session do not form a URL");
}

TEST_F(EndpointURLRequest, CarriesOnlyTheHeaderFieldsThatTheSessionHas) {
    EXPECT_TRUE(endpoint->headerFields().empty());
    delegate->userAgent = "";
    EXPECT_EQ(endpoint->headerFields(), (HeaderFields{{"User-Agent", ""}})) << "that is a value";
    delegate->acceptLanguage = "fi";
    delegate->userAgent = "agent/1";
    delegate->keloClient = "phone/2";
    delegate->sessionKey = "key";
    delegate->polling = true;
    const HeaderFields expected = {{"Accept-Language", "fi"},
                                   {"User-Agent", "agent/1"},
                                   {"X-Kelo-Client", "phone/2"},
                                   {"kelo-session-id", "key"},
                                   {"X-Kelo-Polling", "true"}};
    EXPECT_EQ(endpoint->headerFields(), expected);
    EXPECT_EQ(endpoint->URLRequest().headerFields, expected);
    EXPECT_TRUE(endpoint->URLRequest().originBoundFields.contains("Kelo-Session-Id"));
}

TEST_F(EndpointURLRequest, ACompleteURLGetsAllHeaderFieldsWhateverItsHost) {
    delegate->userAgent = "agent/1";
    delegate->sessionKey = "key";
    for (const char* path :
         {"https://cdn.example/v", "http://elsewhere.example:81/v", "users/me"}) {
        endpoint->setPath(path);
        const auto request = endpoint->URLRequest();
        EXPECT_EQ(request.headerFields, endpoint->headerFields()) << path;
        EXPECT_EQ(request.headerFields.at("kelo-session-id"), "key") << path;
        EXPECT_TRUE(request.originBoundFields.contains("kelo-session-id")) << path;
    }
}

TEST_F(EndpointURLRequest, EncodesParametersIntoTheQueryForEveryMethod) {
    endpoint->setPath("things");
    endpoint->setMethod(Method::POST);
    endpoint->setParameters({{"b", 1}, {"a", "x y"}});
    const auto request = endpoint->URLRequest();
    EXPECT_EQ(request.url->absoluteString(), "https://service.example/things?a=x%20y&b=1");
    EXPECT_EQ(request.method, Method::POST);
    EXPECT_FALSE(request.body.has_value());
}

TEST_F(EndpointURLRequest, AnEncodingErrorIsIgnored) {
    endpoint->setPath("things");
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setParameters({{"bad", std::numeric_limits<double>::infinity()}});
    const auto request = endpoint->URLRequest();
    EXPECT_FALSE(request.body.has_value());
    EXPECT_EQ(request.url->absoluteString(), "https://service.example/things");
}

TEST_F(EndpointURLRequest, EqualPathsMakeEqualEndpoints) {
    const auto other = Endpoint::create(std::make_shared<Session>(SessionType::UnAuthenticated));
    endpoint->setPath("a");
    other->setPath("a");
    other->setMethod(Method::DELETE);
    other->setParameters({{"x", 1}});
    EXPECT_TRUE(*endpoint == *other);
    EXPECT_EQ(std::hash<Endpoint>()(*endpoint), std::hash<Endpoint>()(*other));
    other->setPath("b");
    EXPECT_FALSE(*endpoint == *other);
}

TEST_F(EndpointURLRequest, ANullSessionStopsTheProcess) {
    EXPECT_DEATH(Endpoint::create(nullptr), "contract violated: an endpoint needs a session");
}

} // namespace KeloAPI
