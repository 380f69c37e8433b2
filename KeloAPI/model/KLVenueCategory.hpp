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
    KLVenueCategory(std::string identifier, std::string title)
        : categoryId(std::move(identifier))
        , shortName(std::move(title)) {}

    const std::string categoryId; ///< The category's own identity.
    const std::string shortName;  ///< As the service sends it.

    std::optional<URL> iconUrl; ///< Absent where not known.

    /// Its name in an archive.
    static constexpr std::string_view archivedClassName = "KLVenueCategory";
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Missing texts become empty ones.
    static std::shared_ptr<KLVenueCategory> initWithCoder(KeyedUnarchiver& coder);
};

} // namespace KeloAPI
