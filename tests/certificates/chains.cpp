#include "CertificateCase.hpp"

#include <algorithm>

namespace KeloAPI::testing {

namespace {

/// A root, two authorities below it and a leaf.
struct Chain {
    TestCertificate root = TestCertificate::authority("root");
    TestCertificate upper = root.issue(authorityWish("upper"));
    TestCertificate lower = upper.issue(authorityWish("lower"));
    TestCertificate leaf = lower.issue(serverWish());
};

Certificates strangers(int count) {
    Certificates made;
    for (int i = 0; i < count; ++i) {
        made.push_back(TestCertificate::authority("stranger " + std::to_string(i)));
    }
    return made;
}

/// A leaf that is as many authorities away from a pinned root.
CertificateCase atLength(int count, bool isAccepted) {
    const auto root = TestCertificate::authority("root");
    Certificates between = {root.issue(authorityWish("0"))};
    for (int i = 1; i < count; ++i) {
        between.push_back(between.back().issue(authorityWish(std::to_string(i))));
    }
    const auto leaf = between.back().issue(serverWish());
    std::reverse(between.begin(), between.end());
    return {std::to_string(count) + " authorities in between", isAccepted, leaf, {root}, between};
}

CertificateWish identified(CertificateWish wish) {
    return with(with(std::move(wish), "subjectKeyIdentifier", "hash"), "authorityKeyIdentifier",
                "keyid:always");
}

/// Two authorities of one name, of which the first that is sent did not sign.
CertificateCase withNamesake(const std::string& name, bool isAccepted, bool hasIdentifiers) {
    const auto wish = [&](CertificateWish plain) {
        return hasIdentifiers ? identified(std::move(plain)) : plain;
    };
    const auto root =
        TestCertificate::selfSigned(with(authorityWish("root"), "subjectKeyIdentifier", "hash"));
    const auto right = root.issue(wish(authorityWish("middle")));
    const auto wrong = root.issue(wish(authorityWish("middle")));
    return {name, isAccepted, right.issue(wish(serverWish())), {root}, {wrong, right}};
}

} // namespace

CertificateGroup pins() {
    const Chain chain;
    const auto other = TestCertificate::authority("other");
    const auto namesake = TestCertificate::authority("root");
    const auto lone = TestCertificate::selfSigned(serverWish());
    const auto& leaf = chain.leaf;
    const Certificates whole = {chain.lower, chain.upper, chain.root};
    const Certificates between = {chain.lower, chain.upper};
    return {"A chain has to lead to a pinned certificate, and may end there.",
            {{"the leaf", true, leaf, {leaf}},
             {"the leaf, the whole chain sent", true, leaf, {leaf}, whole},
             {"the authority above the leaf", true, leaf, {chain.lower}, between},
             {"the authority above the leaf, not sent", true, leaf, {chain.lower}},
             {"the authority below the root", true, leaf, {chain.upper}, between},
             {"the root", true, leaf, {chain.root}, between},
             {"the root, sent", true, leaf, {chain.root}, whole},
             {"all of them", true, leaf, {chain.root, chain.upper, chain.lower, leaf}, whole},
             {"another root, and the right one", true, leaf, {other, chain.root}, between},
             {"the leaf, which signed itself", true, lone, {lone}},
             {"another root", false, leaf, {other}, between},
             {"another root, which is sent, too",
              false,
              leaf,
              {other},
              {chain.lower, chain.upper, chain.root, other}},
             {"another leaf of the same authority",
              false,
              leaf,
              {chain.lower.issue(serverWish())},
              between},
             {"another leaf of the same key",
              false,
              leaf,
              {chain.lower.certify(leaf, serverWish())},
              between},
             {"another self-signed leaf", false, lone, {TestCertificate::selfSigned(serverWish())}},
             {"another self-signed leaf of the same key",
              false,
              lone,
              {lone.certify(lone, serverWish())}},
             {"another root of the same name", false, leaf, {namesake}, whole},
             {"a root that is beside the chain alone", false, lone, {other}, {other}},
             {"none", false, leaf, {}, whole}}};
}

CertificateGroup ordersOfChains() {
    const Chain chain;
    const auto& [root, upper, lower, leaf] = chain;
    const Certificates trusted = {root};
    const auto crowd = strangers(20);
    Certificates crowded = crowd;
    crowded.push_back(upper);
    crowded.push_back(lower);
    return {
        "Behind the server's own certificate the order does not count, nor does what is not "
        "needed. What is missing is not looked for elsewhere, and among authorities of one "
        "name key identifiers decide, or else the first is taken.",
        {{"in order", true, leaf, trusted, {lower, upper}},
         {"in order, with the root", true, leaf, trusted, {lower, upper, root}},
         {"in reverse", true, leaf, trusted, {upper, lower}},
         {"in reverse, with the root", true, leaf, trusted, {root, upper, lower}},
         {"the root in the middle", true, leaf, trusted, {lower, root, upper}},
         {"the leaf twice", true, leaf, trusted, {leaf, lower, upper}},
         {"each twice", true, leaf, trusted, {lower, lower, upper, upper}},
         {"a stranger in between", true, leaf, trusted, {lower, crowd[0], upper}},
         {"behind 20 strangers", true, leaf, trusted, crowded},
         {"the leaf alone", false, leaf, trusted},
         {"the lower authority is missing", false, leaf, trusted, {upper}},
         {"the upper authority is missing", false, leaf, trusted, {lower}},
         {"the upper authority is missing, the root is there", false, leaf, trusted, {lower, root}},
         {"strangers alone", false, leaf, trusted, crowd},
         withNamesake("behind a namesake, by key identifiers", true, true),
         withNamesake("behind a namesake, without key identifiers", false, false),
         atLength(10, true),
         atLength(120, false)}};
}

CertificateGroup crossSignatures() {
    const auto a = TestCertificate::authority("a");
    const auto b = TestCertificate::authority("b");
    const auto middleOfA = a.issue(authorityWish("middle"));
    const auto middleOfB = b.certify(middleOfA, authorityWish("middle"));
    const auto leaf = middleOfA.issue(serverWish());
    const auto bByA = a.certify(b, authorityWish("b"));
    const auto aByB = b.certify(a, authorityWish("a"));
    return {
        "Where several ways lead up, one that ends with a pin is enough.",
        {{"by both roots, the pinned one's first", true, leaf, {a}, {middleOfA, middleOfB}},
         {"by both roots, the other one's first, with both roots",
          true,
          leaf,
          {a, b},
          {middleOfB, middleOfA}},
         {"by the root that is not pinned", false, leaf, {a}, {middleOfB}},
         {"the root is signed by the pinned one", true, leaf, {a}, {middleOfB, bByA}},
         {"the pinned root is signed by another", true, leaf, {b}, {middleOfB, bByA}},
         {"the pinned root is signed by another, which is pinned, too",
          true,
          leaf,
          {a, b},
          {middleOfB, bByA}},
         {"two roots that signed each other, one pinned", true, leaf, {a}, {middleOfB, bByA, aByB}},
         {"two roots that signed each other, none pinned",
          false,
          leaf,
          {TestCertificate::authority("c")},
          {middleOfB, bByA, aByB}}}};
}

CertificateGroup systemStore() {
    const Chain chain;
    const auto& [root, upper, lower, leaf] = chain;
    const auto other = TestCertificate::authority("other");
    const auto lone = TestCertificate::selfSigned(serverWish());
    CertificateGroup group{
        "A host without pins is judged by the system's store in the same way.",
        {{"the root", true, leaf, {root}, {lower, upper}},
         {"the root among others", true, leaf, {other, root}, {lower, upper}},
         {"an authority", true, leaf, {upper}, {lower}},
         {"the leaf", true, leaf, {leaf}},
         {"a leaf that signed itself", true, lone, {lone}},
         {"another root", false, leaf, {other}, {lower, upper}},
         {"an authority is missing", false, leaf, {root}, {lower}},
         {"not the leaf, which signed itself", false, lone, {other}},
         {"another host", false, leaf, {root}, {lower, upper}, "other.example.test"}}};
    for (CertificateCase& each : group.cases) {
        each.isPinned = false;
    }
    return group;
}

} // namespace KeloAPI::testing
