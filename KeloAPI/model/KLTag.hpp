#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A hashtag. One thread at a time.
class KELO_API KLTag final : public Archivable {
public:
    /// The name is stored with a "#" before it, unless it begins with one already.
    KLTag(std::string tagId, std::string name);
    /// A tag that has no identifier yet: an empty one.
    explicit KLTag(std::string name)
        : KLTag(std::string(), std::move(name)) {}

    /// "tagId", sent as text or as a number.
    const std::string& tagId() const { return _tagId; }
    /// "tagName" or "tag", with its "#".
    const std::string& name() const { return _name; }
    /// The name without its first "#".
    std::string nameWithoutHash() const;

    /// "postCount": posts with this tag; 0 when missing.
    std::int64_t count = 0;

    static constexpr std::string_view archivedClassName = "KLTag"; ///< Its name in an archive.
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    /// Keeps identifier and name, not the count.
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// What is missing becomes an empty text; no "#" is added.
    static std::shared_ptr<KLTag> initWithCoder(KeyedUnarchiver& coder);

private:
    std::string _tagId;
    std::string _name;
};

/// Needs "tagId" (text or number) and "tagName", or else "tag", as text (`InsufficientData`).
class KELO_API KLTagParser final : public JsonParser<KLTag> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLTag> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
