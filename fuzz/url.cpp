// Any text as a URL, and what follows its first line end as a reference from there: what is read
// and made of it is a URL again, and its host is the one that the transport connects to.
#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>

#include <curl/curl.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace {

using namespace KeloAPI;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// A part of a URL as the transport reads it; absent where it refuses the URL or the part.
std::optional<std::string> transportsPart(const std::string& text, CURLUPart part) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
    char* read = nullptr;
    if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK ||
        curl_url_get(url.get(), part, &read, CURLU_DEFAULT_PORT) != CURLUE_OK) {
        return std::nullopt;
    }
    std::string copy = read;
    curl_free(read);
    return copy;
}

/// As `URL::host` writes it: in lower case, without a dot at the end; an IPv6 address in one
/// notation.
std::string written(std::string host) {
    if (host.starts_with('[')) {
        const auto address = URL::parse("https://" + host);
        return address ? address->host() : std::string();
    }
    host = Ascii::lower(host);
    if (host.ends_with('.')) {
        host.pop_back();
    }
    return host;
}

/// Whoever the policy judges is whom the transport talks to.
void compareWithTransport(const URL& url) {
    const std::string text = url.absoluteString();
    if (!url.isHTTP() || text.find('\0') != std::string::npos) {
        return;
    }
    if (const auto host = transportsPart(text, CURLUPART_HOST)) {
        expect(written(*host) == url.host());
    }
    if (const auto port = transportsPart(text, CURLUPART_PORT)) {
        expect(*port == std::to_string(url.port().value_or(0)));
    }
}

void askEverything(const URL& url) {
    const std::string host = url.host();
    expect(URL::parse(url.absoluteString()) == url);
    expect(url.hasOriginOf(url));
    expect(host.find_first_of("/?#@%") == std::string::npos);
    const bool isAddress = host.find(':') != std::string::npos;
    if (!host.empty()) {
        const auto again = URL::parse("https://" + (isAddress ? '[' + host + ']' : host));
        expect(again && again->host() == host);
    }
    if (const auto query = url.query()) {
        expect(query->find('#') == std::string::npos);
    }
    if (const auto path = url.filePath()) {
        expect(path->find('\0') == std::string::npos);
    }
    compareWithTransport(url);
}

/// A pinned host is found again under every way to write it; an entry that is not a host refuses
/// all.
void askPolicies(const std::string& entry, const URL& url) {
    const ServerTrustPolicyManager policies({{entry, PinCertificates{}}});
    const ServerTrustPolicy* policy = policies.policyFor(url);
    const auto asUrl = URL::parse("https://" + entry);
    if (asUrl && !asUrl->host().empty() && asUrl->host() == url.host()) {
        expect(policy != nullptr);
    }
    if (url.host().empty()) {
        expect(policy != nullptr);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const std::string reference = end < input.size() ? input.substr(end + 1) : std::string();
    const auto url = URL::parse(input.substr(0, end));
    if (!url) {
        return 0;
    }
    askEverything(*url);
    askPolicies(reference, *url);
    if (url->isHTTP()) {
        askEverything(url->appendingPathComponent(reference));
    }
    if (const auto resolved = url->resolve(reference)) {
        askEverything(*resolved);
    }
    if (const auto file = URL::fileURL(reference); !reference.empty()) {
        expect(reference.starts_with('/') == false || reference.find('\0') != std::string::npos ||
               file.filePath() == reference);
    }
    return 0;
}
