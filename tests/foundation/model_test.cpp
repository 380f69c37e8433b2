#include "foundation/FoundationArchive.hpp"
#include "support/ModelArchives.hpp"

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

/// The word for a kind in the Foundation's language, and what stands before its values.
struct KindWords {
    const char* word;
    const char* before;
};

KindWords wordsOf(Kind kind) {
    return std::map<Kind, KindWords>{
        {Kind::Text, {"text", "="}},     {Kind::Address, {"url", "="}},
        {Kind::Instant, {"date", ""}},   {Kind::NumberObject, {"number", "i"}},
        {Kind::Integer, {"int64", ""}},  {Kind::Real, {"double", ""}},
        {Kind::Flag, {"bool", ""}},      {Kind::Stretch, {"object", ""}},
        {Kind::Category, {"object", ""}}}
        .at(kind);
}

/// What a key holds where `kept` shows this, in the same language.
std::string valueOf(Kind kind, const std::string& shown) {
    if (shown == absent) {
        return "null";
    }
    if (kind == Kind::Flag) {
        return shown == "true" ? "1" : "0";
    }
    const bool isObject = kind == Kind::Stretch || kind == Kind::Category;
    return wordsOf(kind).before + (isObject ? "2" : shown);
}

/// All models' classes. A range crosses to the Foundation as an object of the tests' own: it cannot
/// archive ranges.
std::string modelClasses() {
    std::string classes = rangeClass;
    for (const ArchivedModel& model : archivedModels()) {
        classes += "class " + model.className + "\n";
        for (const ArchivedKey& key : model.keys) {
            classes += wordsOf(key.kind).word + (" " + key.name + "\n");
        }
    }
    return classes;
}

/// A Foundation reads in our archive of an object what `kept` shows of it, and writes an archive of
/// the same that we read as the same.
void expectAgreement(const ArchivedModel& model,
                     const std::function<bool(const ArchivedKey&)>& isThere) {
    const Lines shown = model.expected(isThere);
    std::vector<ObjectLines> objects = {{model.className, {}}};
    for (std::size_t at = 0; at < shown.size(); ++at) {
        const ArchivedKey& key = model.keys[at];
        objects[0].second.push_back(valueOf(key.kind, shown[at]));
        if (key.kind == Kind::Stretch) {
            const bool isEmpty = shown[at] == "0+0";
            objects.push_back({"NSValue", {"4", isEmpty ? "i0" : "i4", isEmpty ? "i0" : "i3"}});
        } else if (key.kind == Kind::Category && isThere(key)) {
            objects.push_back({"KLVenueCategory", {"=c", "=Cafe", "null"}});
        }
    }
    const std::string lines = objectsOf(modelClasses(), objects);
    const Data given = model.archive([&](ArchiveFile& file, const ArchivedKey& key) {
        return isThere(key) ? std::optional(entry(file, key)) : std::nullopt;
    });
    EXPECT_EQ(FoundationArchive::read(model.rewrite(given), modelClasses()), lines);
    const Data theirs = FoundationArchive::write(lines);
    EXPECT_EQ(model.read(theirs), shown);
    EXPECT_EQ(model.rewrite(theirs).text(), model.rewrite(given).text());
}

} // namespace

TEST(ModelFoundationTest, AgreesOnEveryModelWithAllItsKeys) {
    for (const ArchivedModel& model : archivedModels()) {
        SCOPED_TRACE(model.className);
        expectAgreement(model, [](const ArchivedKey&) { return true; });
    }
}

TEST(ModelFoundationTest, AgreesOnEveryModelWithNoMoreThanItNeeds) {
    for (const ArchivedModel& model : archivedModels()) {
        SCOPED_TRACE(model.className);
        // An instant that is the present one is another each time.
        expectAgreement(model, [](const ArchivedKey& key) {
            return key.missing == refused || key.missing == "now";
        });
    }
}

} // namespace KeloAPI::testing
