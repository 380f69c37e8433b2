#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/Range.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <functional>

namespace KeloAPI {

/// A stretch of a text that links somewhere. One thread at a time.
class KELO_API KLEntity final : public Archivable {
public:
    /// Stores everything as given.
    KLEntity(std::optional<std::string> identifier, std::optional<std::string> kind,
             std::string titleText, std::string shownLink, Range stretch)
        : idString(std::move(identifier))
        , type(std::move(kind))
        , title(std::move(titleText))
        , link(std::move(shownLink))
        , range(stretch) {}

    /// "id", sent as text or as a number.
    const std::optional<std::string> idString;
    /// "type".
    const std::optional<std::string> type;
    /// "title"; empty when missing.
    const std::string title;
    /// "link" as user interfaces show it: with " | " before it; empty when missing.
    const std::string link;
    /// The stretch, in UTF-16 code units of the text. The wire counts code points.
    Range range;

    /// The link without its first " | ".
    std::string applicationLink() const;

    static constexpr std::string_view archivedClassName = "KLEntity"; ///< Its name in an archive.
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// What is missing becomes absent, empty or an empty range; the link is taken as it was kept.
    static std::shared_ptr<KLEntity> initWithCoder(KeyedUnarchiver& coder);

    /// Equal are entities of the same identifier, type and title.
    KELO_API friend bool operator==(const KLEntity& a, const KLEntity& b);
};

/// Needs "range", a list of two numbers (`InsufficientData`): the offsets of its start and its end
/// in code points, within the text and in order (`InvalidData`).
class KELO_API KLEntityParser final : public JsonParser<KLEntity> {
public:
    using Reading = detail::OnArrival;
    /// For the entities of this text, in UTF-8.
    explicit KLEntityParser(std::string_view text);
    std::shared_ptr<KLEntity> parse(const JsonObject& json) const override;

private:
    std::int64_t utf16Offset(std::int64_t codePoints) const;

    std::int64_t _codePoints = 0;
    /// Where the code points stand that take two UTF-16 units, in code points.
    std::vector<std::int64_t> _pairs;
};

} // namespace KeloAPI

/// Made of what equality looks at.
template <>
struct std::hash<KeloAPI::KLEntity> {
    std::size_t operator()(const KeloAPI::KLEntity& entity) const {
        const std::hash<std::optional<std::string>> optionalText;
        std::size_t result = optionalText(entity.idString);
        result = result * 31 + optionalText(entity.type);
        return result * 31 + std::hash<std::string>()(entity.title);
    }
};
