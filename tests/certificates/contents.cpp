#include "CertificateCase.hpp"

namespace KeloAPI::testing {

namespace {

using std::chrono::hours;
using std::chrono::seconds;

constexpr hours day{24};
constexpr hours year = 365 * day;

CertificateWish lasting(CertificateWish wish, seconds from, seconds to) {
    wish.notBefore = from;
    wish.notAfter = to;
    return wish;
}

CertificateWish expired(CertificateWish wish) {
    return lasting(std::move(wish), -2 * day, -day);
}

CertificateWish notYet(CertificateWish wish) {
    return lasting(std::move(wish), day, 2 * day);
}

/// The wish with another key or digest.
CertificateWish made(CertificateWish wish, const std::string& key, const std::string& digest) {
    wish.key = key;
    wish.digest = digest;
    return wish;
}

/// The leaf under a root that is pinned.
CertificateCase underRoot(const std::string& name, bool isAccepted, const CertificateWish& leaf) {
    const auto root = TestCertificate::authority();
    return {name, isAccepted, root.issue(leaf), {root}};
}

/// The usual leaf under an intermediate authority as wished, under a root that is pinned.
CertificateCase underAuthority(const std::string& name, bool isAccepted,
                               const CertificateWish& authority) {
    const auto root = TestCertificate::authority();
    const auto middle = root.issue(authority);
    return {name, isAccepted, middle.issue(serverWish()), {root}, {middle}};
}

/// The usual leaf under a root as wished, which is pinned.
CertificateCase underPinned(const std::string& name, bool isAccepted, const CertificateWish& wish) {
    const auto root = TestCertificate::selfSigned(wish);
    return {name, isAccepted, root.issue(serverWish()), {root}};
}

/// A leaf that is pinned itself.
CertificateCase pinnedLeaf(const std::string& name, bool isAccepted, const CertificateWish& wish) {
    const auto leaf = TestCertificate::authority().issue(wish);
    return {name, isAccepted, leaf, {leaf}};
}

const CertificateWish server = serverWish();
const CertificateWish authority = authorityWish("an authority");

/// Signatures that do not fit.
void addForged(CertificateGroup& group) {
    const auto root = TestCertificate::authority("root");
    const auto middle = root.issue(authority);
    const auto leaf = root.issue(server);
    const auto changed = leaf.withChangedSignature();
    const auto add = [&](CertificateCase each) { group.cases.push_back(std::move(each)); };
    add({"a leaf with a changed signature", false, changed, {root}});
    add({"a pinned leaf with a changed signature", true, changed, {changed}});
    add({"a leaf with a changed signature, pinned as it was", false, changed, {leaf}});
    add({"an authority with a changed signature",
         false,
         middle.issue(server),
         {root},
         {middle.withChangedSignature()}});
    add({"a leaf by a namesake of the authority",
         false,
         TestCertificate::authority("root").issue(server),
         {root}});
}

} // namespace

CertificateGroup dates() {
    CertificateGroup group{
        "Each certificate from the server's to the trusted one has to be valid "
        "now; what is beyond does not count.",
        {underRoot("valid since this second", true, lasting(server, {}, day)),
         underRoot("valid for 1,000 years", true, lasting(server, -day, 1000 * year)),
         underRoot("valid since before 1970", true, lasting(server, -60 * year, day)),
         underRoot("valid since before 1950", true, lasting(server, -100 * year, day)),
         underRoot("expired a second ago", false, lasting(server, -day, seconds(-1))),
         underRoot("expired", false, expired(server)),
         underRoot("not valid yet", false, notYet(server)),
         underRoot("valid from a day that its end precedes", false, lasting(server, day, -day)),
         pinnedLeaf("pinned, expired", false, expired(server)),
         pinnedLeaf("pinned, not valid yet", false, notYet(server)),
         underRoot("valid longer than its authority", true, lasting(server, -day, 10 * year)),
         underAuthority("the authority has expired", false, expired(authority)),
         underAuthority("the authority is not valid yet", false, notYet(authority)),
         underPinned("the pinned root has expired", false, expired(authority)),
         underPinned("the pinned root is not valid yet", false, notYet(authority))}};
    const auto old = TestCertificate::selfSigned(expired(authorityWish("root")));
    const auto renewed = old.certify(old, authorityWish("root"));
    const auto middle = old.issue(authority);
    const auto oldMiddle = old.certify(middle, expired(authority));
    const auto leaf = middle.issue(server);
    group.cases.push_back({"beyond the pinned leaf an expired root", true, leaf, {leaf}, {old}});
    group.cases.push_back(
        {"beyond the pinned authority an expired root", true, leaf, {middle}, {middle, old}});
    group.cases.push_back(
        {"an expired root is sent, its successor pinned", true, leaf, {renewed}, {middle, old}});
    group.cases.push_back({"an expired authority is sent before its successor",
                           true,
                           leaf,
                           {renewed},
                           {oldMiddle, middle}});
    return group;
}

CertificateGroup usages() {
    CertificateGroup group{"What a certificate says it is for has to include servers' TLS, by this "
                           "or an older name, or signing certificates; one that says nothing may "
                           "be used.",
                           {}};
    const auto add = [&](CertificateCase each) { group.cases.push_back(std::move(each)); };
    const auto leafUsages = {
        std::pair("digitalSignature", true),  std::pair("keyEncipherment", true),
        std::pair("keyAgreement", true),      std::pair("keyCertSign", false),
        std::pair("cRLSign", false),          std::pair("nonRepudiation", false),
        std::pair("dataEncipherment", false), std::pair("digitalSignature,keyCertSign", true)};
    for (const auto& [usage, fits] : leafUsages) {
        const auto wish = with(server, "keyUsage", std::string("critical,") + usage);
        add(underRoot(std::string("a key for ") + usage, fits, wish));
    }
    const auto purposes = {std::pair("serverAuth", true),
                           std::pair("serverAuth,clientAuth", true),
                           std::pair("1.2.3.4,serverAuth", true),
                           std::pair("critical,serverAuth", true),
                           std::pair("msSGC", true),
                           std::pair("clientAuth", false),
                           std::pair("codeSigning", false),
                           std::pair("emailProtection", false),
                           std::pair("anyExtendedKeyUsage", false),
                           std::pair("1.2.3.4", false)};
    for (const auto& [purpose, fits] : purposes) {
        const std::string name = std::string(" for ") + purpose;
        add(underRoot("a leaf" + name, fits, with(server, "extendedKeyUsage", purpose)));
        add(pinnedLeaf("a pinned leaf" + name, fits, with(server, "extendedKeyUsage", purpose)));
        add(underAuthority("an authority" + name, fits,
                           with(authority, "extendedKeyUsage", purpose)));
    }
    for (const auto& [type, fits] : {std::pair("server", true), std::pair("client", false)}) {
        add(underRoot(std::string("a leaf of the old type ") + type, fits,
                      with(server, "nsCertType", type)));
    }
    add(underPinned("a pinned root for clientAuth", false,
                    with(authority, "extendedKeyUsage", "clientAuth")));
    const auto signing = {std::pair("keyCertSign", true), std::pair("keyCertSign,cRLSign", true),
                          std::pair("cRLSign", false), std::pair("digitalSignature", false)};
    for (const auto& [usage, fits] : signing) {
        const auto wish = with(authority, "keyUsage", std::string("critical,") + usage);
        add(underAuthority(std::string("an authority's key for ") + usage, fits, wish));
        add(underPinned(std::string("a pinned root's key for ") + usage, fits, wish));
    }
    add(pinnedLeaf("a pinned leaf's key for keyCertSign", false,
                   with(server, "keyUsage", "critical,keyCertSign")));
    return group;
}

CertificateGroup extensions() {
    const auto critical = [](CertificateWish wish) {
        return with(std::move(wish), "1.2.3.4", "critical,DER:0500");
    };
    const auto plain = [](CertificateWish wish) {
        return with(std::move(wish), "1.2.3.4", "DER:0500");
    };
    CertificateWish first = server;
    first.version = 1;
    first.commonName = usualHost;
    CertificateWish firstAuthority = authority;
    firstAuthority.version = 1;
    CertificateWish broken = server;
    broken.basicConstraints = "critical,DER:0500";
    CertificateWish criticallyNamed = server;
    criticallyNamed.names = "critical," + server.names;
    return {
        "A critical extension has to be known, and none may be there twice. A certificate of "
        "version 1, which has none, may be a leaf or a trusted root, not an authority between.",
        {underRoot("an unknown critical extension", false, critical(server)),
         pinnedLeaf("an unknown critical extension, pinned", false, critical(server)),
         underAuthority("an unknown critical extension of the authority", false,
                        critical(authority)),
         underPinned("an unknown critical extension of the pinned root", false,
                     critical(authority)),
         underRoot("an unknown extension", true, plain(server)),
         underAuthority("an unknown extension of the authority", true, plain(authority)),
         underPinned("an unknown extension of the pinned root", true, plain(authority)),
         underRoot("names that are critical", true, criticallyNamed),
         underAuthority("policies that the authority wants, which do not count", true,
                        with(authority, "policyConstraints", "critical,requireExplicitPolicy:0")),
         underRoot("names twice", false, with(server, "subjectAltName", "DNS:other.test")),
         underRoot(
             "usages twice", false,
             with(with(server, "keyUsage", "digitalSignature"), "keyUsage", "keyEncipherment")),
         underRoot("basic constraints that cannot be read", false, broken),
         underRoot("a leaf of version 1", true, first),
         pinnedLeaf("a pinned leaf of version 1", true, first),
         underPinned("a pinned root of version 1", true, firstAuthority),
         underAuthority("an authority of version 1", false, firstAuthority)}};
}

CertificateGroup signatures() {
    CertificateGroup group{"Keys and signatures have 112 bits of security or more, and signatures "
                           "fit. How a trusted certificate is signed does not count.",
                           {}};
    const auto kinds = {
        std::tuple("P-256", "SHA512", true),     std::tuple("P-384", "SHA384", true),
        std::tuple("P-521", "SHA512", true),     std::tuple("RSA-2048", "SHA256", true),
        std::tuple("RSA-1024", "SHA256", false), std::tuple("P-192", "SHA256", false)};
    for (const auto& [key, digest, fits] : kinds) {
        const std::string name = std::string(key) + " and " + digest;
        group.cases.push_back(underRoot("a leaf's " + name, fits, made(server, key, digest)));
        group.cases.push_back(
            pinnedLeaf("a pinned leaf's " + name, fits, made(server, key, digest)));
        group.cases.push_back(
            underAuthority("an authority's " + name, fits, made(authority, key, digest)));
        group.cases.push_back(
            underPinned("a pinned root's " + name, fits, made(authority, key, digest)));
    }
    const auto weak = [](const CertificateWish& wish) { return made(wish, "P-256", "SHA1"); };
    group.cases.push_back(underRoot("a leaf by SHA1", false, weak(server)));
    group.cases.push_back(pinnedLeaf("a pinned leaf by SHA1", true, weak(server)));
    group.cases.push_back(underAuthority("an authority by SHA1", false, weak(authority)));
    group.cases.push_back(underPinned("a pinned root by SHA1", true, weak(authority)));
    const auto rsa = TestCertificate::selfSigned(made(authority, "RSA-2048", "SHA256"));
    group.cases.push_back(
        {"a leaf by RSA and MD5", false, rsa.issue(made(server, "P-256", "MD5")), {rsa}});
    group.cases.push_back(
        {"a leaf by RSA and SHA384", true, rsa.issue(made(server, "P-256", "SHA384")), {rsa}});
    group.cases.push_back(underRoot("a leaf by SHA224", true, made(server, "P-256", "SHA224")));
    group.cases.push_back(
        underRoot("a leaf's Ed25519 and SHA256", true, made(server, "Ed25519", "SHA256")));
    addForged(group);
    return group;
}

} // namespace KeloAPI::testing
