#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A hashtag. One thread at a time.
class KELO_API KLTag final : public Archivable {
public:
    /// The name is stored with a "#" before it, unless it begins with one already.
    KLTag(std::string identifier, const std::string& tagName);
    /// A tag that has no identifier yet: an empty one.
    explicit KLTag(const std::string& tagName)
        : KLTag(std::string(), tagName) {}

    /// "tagId", sent as text or as a number.
    const std::string tagId;
    /// "tagName" or "tag", with its "#".
    const std::string name;
    /// "postCount": posts with this tag; 0 when missing.
    std::int64_t count = 0;

    /// The name without its first "#".
    std::string nameWithoutHash() const;

    static constexpr std::string_view archivedClassName = "KLTag"; ///< Its name in an archive.
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    /// Keeps identifier and name, not the count.
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// What is missing becomes an empty text; no "#" is added.
    static std::shared_ptr<KLTag> initWithCoder(KeyedUnarchiver& coder);

private:
    struct AsKept {};
    KLTag(AsKept, std::string identifier, std::string keptName)
        : tagId(std::move(identifier))
        , name(std::move(keptName)) {}
};

/// Needs "tagId" (text or number) and "tagName", or else "tag", as text (`InsufficientData`).
class KELO_API KLTagParser final : public JsonParser<KLTag> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLTag> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
