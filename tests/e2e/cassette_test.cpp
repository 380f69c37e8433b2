#include "support/FixedRequest.hpp"
#include "UploadTest.hpp"

#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/api/internal/Base64.hpp>
#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/fakes/PlaybackTransport.hpp>
#include <KeloAPI/fakes/RecordingTransport.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

#include <algorithm>
#include <mutex>

namespace KeloAPI::testing {

namespace {

/// The user and password of a seeded user, and other secrets that a host may send.
struct Secrets {
    std::string username = "kofi";
    std::string password = "loop-the-loop";
    std::string uploadToken = "t0k/en+\"of\" an & upl\xC3\xA9\xC3\xA0"
                              "d";
    std::string cookie = "c00kie/of-a-host";
    std::string secondCookie = "c00kie+number/two";
    std::string nestedToken = "n3sted-token-of-a-host";
    std::string bearer = "b3arer+of/a-host";
    /// What the service gives.
    std::string sessionKey;

    std::vector<std::string> all() const {
        return {password, uploadToken, cookie, secondCookie, nestedToken, bearer, sessionKey};
    }
};

/// How a secret may stand in a text: as it is, percent-encoded, escaped for JSON, in base64 by
/// itself and with something in front.
std::vector<std::string> formsOf(const std::string& secret) {
    std::string lower = percentEncoded(secret);
    for (std::size_t at = lower.find('%'); at != lower.npos; at = lower.find('%', at + 1)) {
        std::transform(lower.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                       lower.begin() + static_cast<std::ptrdiff_t>(at) + 3,
                       lower.begin() + static_cast<std::ptrdiff_t>(at) + 1, tolower);
    }
    const std::string quoted = nlohmann::json(secret).dump();
    std::vector<std::string> forms = {secret, percentEncoded(secret), lower,
                                      quoted.substr(1, quoted.size() - 2)};
    for (std::size_t before = 0; before < 3; ++before) {
        // Without what is shared with the neighbours.
        forms.push_back(
            base64Encoded(std::string(before, 'x') + secret).substr(4, secret.size() / 3 * 4 - 8));
    }
    return forms;
}

/// The text, and what is in base64 in it.
std::string withDecoded(const nlohmann::json& value) {
    std::string text;
    if (value.is_string()) {
        text = value.get<std::string>();
        text += "\n" + base64Decoded(text).value_or("");
    }
    if (value.is_structured()) {
        for (const auto& [name, member] : value.items()) {
            text += name + "\n" + withDecoded(member) + "\n";
        }
    }
    return text;
}

/// Those forms of those secrets that are found.
std::vector<std::string> foundIn(const std::string& text, const Secrets& secrets) {
    std::vector<std::string> found;
    for (const std::string& secret : secrets.all()) {
        for (const std::string& form : formsOf(secret)) {
            if (text.find(form) != text.npos) {
                found.push_back(form);
            }
        }
    }
    return found;
}

} // namespace

/// Signs in, reads, acts, uploads and downloads at the stand-in over real TLS, with secrets
/// wherever a host may send them.
class CassetteAtService : public UploadTest {
protected:
    CassetteAtService() {
        Diagnostics::setSink([this](std::string_view line) {
            const std::lock_guard lock(_mutex);
            _traces.append(line).append("\n");
        });
    }
    ~CassetteAtService() override { Diagnostics::setSink({}); }

    std::string traces() {
        const std::lock_guard lock(_mutex);
        return _traces;
    }

    void use(std::shared_ptr<Transport> transport) {
        manager = std::make_shared<Manager>(std::move(transport));
        session->setSessionManager(manager);
    }

    /// What a host sees of it, in words.
    std::vector<std::string> flow(Secrets& secrets) {
        std::vector<std::string> seen;
        delegate->sessionKey.reset();
        secrets.sessionKey = signIn(secrets);
        delegate->sessionKey = secrets.sessionKey;
        const auto page = fetch(TimelineEndpoint::create("popular"));
        EXPECT_TRUE(page.success());
        for (const auto& post : page.success()->posts) {
            seen.push_back(post->caption.value_or("-"));
        }
        seen.push_back(like(page.success()->posts.at(0)));
        seen.push_back(sendFields(secrets));
        seen.push_back(upload(secrets));
        seen.push_back(echo(secrets));
        seen.push_back(std::to_string(fetched("https://" + service.host() + "/redirected").size()));
        return seen;
    }

    std::string textOf(const std::shared_ptr<Endpoint>& call) {
        const auto [text, error] = awaited<std::optional<std::string>, std::optional<Error>>(
            [&](auto completion) { call->request(completion); });
        EXPECT_FALSE(error) << error->description();
        return text.value_or("");
    }

    std::string signIn(const Secrets& secrets) {
        const auto call = Endpoint::create(session);
        call->setPath("sessions");
        call->setMethod(Method::POST);
        call->setParameterEncoding(ParameterEncoding::JSON);
        call->setParameters({{"username", secrets.username}, {"password", secrets.password}});
        return nlohmann::json::parse(textOf(call)).at("data").at("key");
    }

    std::string like(const std::shared_ptr<KLWatchPost>& post) {
        const auto call = LikeActionEndpoint::create(post);
        const auto result = awaited<PostActionResult<KLLike>>(
            [&](auto completion) { call->toggle(true, completion); });
        return result.error() ? result.error()->description() : "liked";
    }

    /// One segment, whose bytes hold the session's key and a cookie, to a URL with a token.
    std::string upload(const Secrets& secrets) {
        const std::string bytes =
            "\xFF\xFE" + secrets.sessionKey + secrets.secondCookie + std::string(3, '\0');
        const auto segment = Endpoint::create(session);
        segment->setPath("upload/longform-videos/" + newUpload(100));
        segment->setMethod(Method::PUT);
        segment->setParameters({{"segmentIndex", 0}, {"uploadToken", secrets.uploadToken}});
        std::optional<std::string> outcome;
        segment->upload(std::make_shared<KLEmptyParser>(), Data(bytes),
                        [&](const auto&, const auto&, const auto&, const auto& error) {
                            outcome = error ? error->description() : "uploaded";
                        });
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        return outcome.value_or("");
    }

    /// A response that has the key in it under no name, and a path with it.
    std::string echo(const Secrets& secrets) {
        const auto call = Endpoint::create(session);
        call->setPath("echo/" + secrets.sessionKey);
        const std::string said = textOf(call);
        return std::to_string(std::count(said.begin(), said.end(), ' '));
    }

    /// Fields that the library itself does not send.
    std::string sendFields(const Secrets& secrets) {
        const std::string nested = "https://h/?a=b&token=" + secrets.nestedToken;
        FixedRequest request("https://" + service.host() +
                             "/soundboard?next=" + percentEncoded(nested));
        request.request.headerFields = {
            {"Cookie", "sid=" + secrets.cookie + "; device=" + secrets.secondCookie},
            {"Authorization", "Bearer " + secrets.bearer}};
        std::optional<std::string> outcome;
        manager->request(request)->response([&](const ResponseContent& content, Timeline) {
            return [&outcome, size = content.body.size()] { outcome = std::to_string(size); };
        });
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        return outcome.value_or("");
    }

    void addFaults(const Secrets& secrets) {
        service.addFault({{"match", {{"path", "/redirected"}}},
                          {"action",
                           {{"type", "redirect"},
                            {"location", "https://" + service.host() + videoPath +
                                             "?token=" + percentEncoded(secrets.uploadToken)}}}});
    }
    /// Answers the next echo with the key in its forms.
    void addEcho(const std::string& key) {
        const std::string said = "bad key " + key + " or " + percentEncoded(key) + " or " +
                                 base64Encoded("ab" + key + "yz") + " in \"" + key + "\"";
        service.addFault(
            {{"match", {{"path", "/echo/*"}}}, {"action", {{"type", "body"}, {"body", said}}}});
    }

    std::string videoPath = "/media/videos/unknown.mp4";
    std::shared_ptr<Manager> manager;

private:
    std::mutex _mutex;
    std::string _traces;
};

TEST_F(CassetteAtService, HasNoSecretInItsFileNorIsOneInTheTraces) {
    const auto first = fetch(TimelineEndpoint::create("popular"));
    videoPath = URL::parse(first.success()->posts.at(0)->videoUrl.value())->path();
    service.requests();
    Secrets secrets;
    addFaults(secrets);
    addEcho("any-key-at-a11");
    const auto cassette = std::make_shared<fakes::Cassette>();
    const std::map<std::string, ServerTrustPolicy> policies = {
        {service.host(), PinCertificates{Certificates::chain()}}};
    use(std::make_shared<fakes::RecordingTransport>(ServerTrustPolicyManager(policies), cassette));
    const std::vector<std::string> seen = flow(secrets);

    // All of them went over the wire.
    std::string sent;
    for (const SeenRequest& request : service.requests()) {
        sent += request.path + "?" + request.query + "\n" + request.body + "\n";
        for (const auto& [name, value] : request.headers) {
            sent += name + ": " + value + "\n";
        }
    }
    for (const std::string& secret : secrets.all()) {
        const auto forms = formsOf(secret);
        EXPECT_TRUE(std::any_of(forms.begin(), forms.end(), [&](const std::string& form) {
            return sent.find(form) != sent.npos;
        })) << secret;
    }

    const std::string path = folder.path("flow.json");
    ASSERT_EQ(cassette->save(path), std::nullopt);
    const std::string file = contentsOf(path);
    EXPECT_THAT(foundIn(file, secrets), ::testing::IsEmpty());
    EXPECT_THAT(foundIn(withDecoded(nlohmann::json::parse(file)), secrets), ::testing::IsEmpty());
    const nlohmann::json signIn = {{"username", "BLANKED"}, {"password", "BLANKED"}};
    EXPECT_EQ(nlohmann::json::parse(file).at("exchanges").at(0).at("request").at("json"), signIn);
    EXPECT_THAT(traces(), ::testing::HasSubstr("uploadToken=BLANKED"));
    EXPECT_THAT(foundIn(traces(), secrets), ::testing::IsEmpty());

    // And it plays, with other secrets.
    for (const auto playback : {fakes::Playback::Strict, fakes::Playback::ByRoute}) {
        const auto loaded = fakes::Cassette::load(path);
        ASSERT_TRUE(loaded) << loaded.error().description();
        const auto transport = std::make_shared<fakes::PlaybackTransport>(loaded.value(), playback);
        use(transport);
        Secrets others;
        others.password = "0ther-password";
        others.uploadToken = "0ther token";
        EXPECT_EQ(flow(others), seen);
        EXPECT_EQ(others.sessionKey, "BLANKED");
        EXPECT_THAT(transport->unexpectedRequests(), ::testing::IsEmpty());
        EXPECT_EQ(transport->unplayedCount(), 0U);
    }
    EXPECT_THAT(service.requests(), ::testing::IsEmpty());
}

TEST_F(CassetteAtService, BlanksWhatAResponseRepeatsOfASecret) {
    const std::string key = service.signIn("kofi");
    addEcho(key);
    delegate->sessionKey = key;
    const auto cassette = std::make_shared<fakes::Cassette>();
    const std::map<std::string, ServerTrustPolicy> policies = {
        {service.host(), PinCertificates{Certificates::chain()}}};
    use(std::make_shared<fakes::RecordingTransport>(ServerTrustPolicyManager(policies), cassette));
    Secrets secrets;
    secrets.sessionKey = key;
    EXPECT_EQ(echo(secrets), "8");
    EXPECT_THAT(cassette->text(), ::testing::HasSubstr("bad key BLANKED or BLANKED or "));
    EXPECT_THAT(foundIn(cassette->text(), secrets), ::testing::IsEmpty());
}

TEST(SecretHuntTest, FindsEachForm) {
    Secrets secrets;
    secrets.sessionKey = "k3y-k3y-k3y-k3y";
    const std::string& token = secrets.uploadToken;
    for (const std::string& text :
         {token, percentEncoded(token), nlohmann::json(token).dump(), base64Encoded(token),
          base64Encoded("x" + token), base64Encoded("xy" + token + "z"),
          base64Encoded("xyz" + token), secrets.sessionKey, secrets.password, secrets.cookie,
          secrets.secondCookie, secrets.nestedToken, secrets.bearer}) {
        EXPECT_THAT(foundIn("a " + text + " b", secrets), ::testing::Not(::testing::IsEmpty()))
            << text;
    }
    const auto file = nlohmann::json{{"a", {base64Encoded("\xFF" + secrets.sessionKey)}}};
    EXPECT_THAT(foundIn(withDecoded(file), secrets), ::testing::Not(::testing::IsEmpty()));
}

} // namespace KeloAPI::testing
