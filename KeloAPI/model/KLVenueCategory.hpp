#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/URL.hpp>

#include <memory>
#include <utility>

namespace KeloAPI {

/// What kind of place a venue is. One thread at a time.
class KELO_API KLVenueCategory final : public Archivable {
public:
    /// Without an icon. The parsers of venues name the wire keys.
    KLVenueCategory(std::string categoryId, std::string shortName)
        : _categoryId(std::move(categoryId))
        , _shortName(std::move(shortName)) {}

    const std::string& categoryId() const { return _categoryId; } ///< The category's own identity.
    const std::string& shortName() const { return _shortName; }   ///< As the service sends it.

    std::optional<URL> iconUrl; ///< Absent where not known.

    /// Its name in an archive.
    static constexpr std::string_view archivedClassName = "KLVenueCategory";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Missing texts become empty ones.
    static std::shared_ptr<KLVenueCategory> initWithCoder(KeyedUnarchiver& coder);

private:
    std::string _categoryId;
    std::string _shortName;
};

} // namespace KeloAPI
