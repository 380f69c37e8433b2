#include "CertificateCase.hpp"

namespace KeloAPI::testing {

namespace {

CertificateWish constrained(const std::string& name, const std::string& basicConstraints) {
    CertificateWish wish = authorityWish(name);
    wish.basicConstraints = basicConstraints;
    return wish;
}

/// Each signs the next, the last one the usual leaf; the first is pinned.
CertificateCase under(const std::string& name, bool isAccepted,
                      const std::vector<CertificateWish>& authorities) {
    Certificates chain = {TestCertificate::selfSigned(authorities.front())};
    for (std::size_t i = 1; i < authorities.size(); ++i) {
        chain.push_back(chain.back().issue(authorities[i]));
    }
    return {name,
            isAccepted,
            chain.back().issue(serverWish()),
            {chain.front()},
            {chain.rbegin(), chain.rend() - 1}};
}

/// A leaf under an authority with these name constraints; the authority itself is trusted, or else
/// the root above it.
void addConstrained(CertificateGroup& group, const std::string& constraints, bool isAccepted,
                    const CertificateWish& leafWish, const std::string& leafName,
                    const std::string& host = usualHost) {
    const auto root = TestCertificate::authority("root");
    const auto middle =
        root.issue(with(authorityWish("middle"), "nameConstraints", "critical," + constraints));
    const auto leaf = middle.issue(leafWish);
    const std::string name = '`' + constraints + "`, " + leafName;
    group.cases.push_back({name, isAccepted, leaf, {root}, {middle}, host});
    group.cases.push_back({name + ", itself pinned", isAccepted, leaf, {middle}, {}, host});
}

CertificateWish named(const std::string& names, const std::string& commonName = "a server") {
    CertificateWish wish;
    wish.commonName = commonName;
    wish.names = names;
    return wish;
}

} // namespace

CertificateGroup issuers() {
    const auto root = authorityWish("root");
    const auto middle = authorityWish("middle");
    const auto lower = authorityWish("lower");
    const std::string yes = "critical,CA:TRUE";
    const std::string no = "critical,CA:FALSE";
    CertificateGroup group{
        "Only an authority signs certificates, and no more of them stand below it than it says.",
        {under("an authority", true, {root, middle}),
         under("an authority not said to be one critically", true,
               {root, constrained("middle", "CA:TRUE")}),
         under("no authority", false, {root, constrained("middle", no)}),
         under("nothing said of authority", false, {root, constrained("middle", "")}),
         under("the pinned root is no authority", false, {constrained("root", no)}),
         under("nothing said of the pinned root's authority", false, {constrained("root", "")}),
         under("a root for none below, none", true, {constrained("root", yes + ",pathlen:0")}),
         under("a root for none below, one", false,
               {constrained("root", yes + ",pathlen:0"), middle}),
         under("a root for one below, one", true,
               {constrained("root", yes + ",pathlen:1"), middle}),
         under("a root for one below, two", false,
               {constrained("root", yes + ",pathlen:1"), middle, lower}),
         under("an authority for none below, none", true,
               {root, constrained("middle", yes + ",pathlen:0")}),
         under("an authority for none below, one", false,
               {root, constrained("middle", yes + ",pathlen:0"), lower}),
         under("an authority for one below, one", true,
               {root, constrained("middle", yes + ",pathlen:1"), lower}),
         under("one below allows more than the one above", false,
               {constrained("root", yes + ",pathlen:0"),
                constrained("middle", yes + ",pathlen:5")})}};
    CertificateWish neighbour = serverWish();
    neighbour.commonName = "another server";
    const auto pinned = TestCertificate::authority().issue(neighbour);
    group.cases.push_back({"signed by a pinned leaf", false, pinned.issue(serverWish()), {pinned}});
    CertificateWish both = serverWish();
    both.authority = true;
    const auto itself = TestCertificate::selfSigned(both);
    group.cases.push_back({"a server that is an authority, pinned", true, itself, {itself}});
    return group;
}

CertificateGroup nameConstraints() {
    CertificateGroup group{
        "Every name of a certificate has to lie within what the authorities above it are "
        "permitted, and outside what they are not.",
        {}};
    const auto usual = serverWish();
    addConstrained(group, "permitted;DNS:example.test", true, usual, "a name within");
    addConstrained(group, "permitted;DNS:api.example.test", true, usual, "that name");
    addConstrained(group, "permitted;DNS:.example.test", true, usual, "a name within");
    addConstrained(group, "permitted;DNS:other.test", false, usual, "another name");
    addConstrained(group, "permitted;DNS:ample.test", false, usual, "a name that ends so");
    addConstrained(group, "permitted;DNS:example.test", true, named("DNS:*.example.test"),
                   "a wildcard within");
    addConstrained(group, "permitted;DNS:example.test", false,
                   named("DNS:api.example.test,DNS:api.other.test"), "one of two names within");
    addConstrained(group, "permitted;DNS:other.test,permitted;DNS:example.test", true, usual,
                   "a name within one");
    addConstrained(group, "excluded;DNS:example.test", false, usual, "a name within");
    addConstrained(group, "excluded;DNS:other.test", true, usual, "another name");
    addConstrained(group, "permitted;DNS:example.test,excluded;DNS:api.example.test", false, usual,
                   "that name");
    addConstrained(group, "permitted;DNS:EXAMPLE.test", true, usual, "a name within");
    addConstrained(group, "permitted;DNS:api.example.test", false, named("DNS:*.example.test"),
                   "a wildcard that reaches further");
    addConstrained(group, "excluded;DNS:api.example.test", true, named("DNS:*.example.test"),
                   "a wildcard that reaches there, too");
    addConstrained(group, "permitted;email:example.test", true, usual, "a name of a host");
    addConstrained(group, "permitted;DNS:other.test", false, named("", usualHost),
                   "another common name");
    addConstrained(group, "permitted;DNS:example.test", true, named("", usualHost),
                   "a common name within");
    addConstrained(group, "permitted;IP:127.0.0.0/255.0.0.0", true, named("IP:127.0.0.1"),
                   "an address within", "127.0.0.1");
    addConstrained(group, "permitted;IP:10.0.0.0/255.0.0.0", false, named("IP:127.0.0.1"),
                   "another address", "127.0.0.1");
    addConstrained(group, "excluded;IP:127.0.0.0/255.0.0.0", false, named("IP:127.0.0.1"),
                   "an address within", "127.0.0.1");
    addConstrained(group, "permitted;DNS:example.test", true, named("IP:127.0.0.1"), "an address",
                   "127.0.0.1");
    addConstrained(group, "permitted;IP:2001:db8::/ffff:ffff::", true, named("IP:2001:db8::1"),
                   "an address within", "[2001:db8::1]");
    addConstrained(group, "excluded;IP:2001:db8::/ffff:ffff::", false, named("IP:2001:db8::1"),
                   "an address within", "[2001:db8::1]");
    const auto permitting = [](const std::string& name, const std::string& domain) {
        return with(authorityWish(name), "nameConstraints", "critical,permitted;DNS:" + domain);
    };
    group.cases.push_back(
        under("within what both authorities permit", true,
              {permitting("root", "example.test"), permitting("middle", "api.example.test")}));
    group.cases.push_back(
        under("within what one of both authorities permits", false,
              {permitting("root", "other.test"), permitting("middle", "api.example.test")}));
    return group;
}

} // namespace KeloAPI::testing
