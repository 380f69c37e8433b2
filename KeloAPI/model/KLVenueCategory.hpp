#pragma once

#include <KeloAPI/platform/Export.hpp>
#include <KeloAPI/platform/Object.hpp>
#include <KeloAPI/platform/URL.hpp>

#include <optional>
#include <string>

namespace KeloAPI {

/// What kind of place a venue is. One thread at a time.
class KELO_API KLVenueCategory final : public Object {
public:
    KLVenueCategory(std::string categoryId, std::string shortName);
    KLVenueCategory() = delete;
    ~KLVenueCategory() override;

    const std::string& categoryId() const { return _categoryId; }
    const std::string& shortName() const { return _shortName; }

    std::optional<URL> iconUrl;

private:
    std::string _categoryId;
    std::string _shortName;
};

} // namespace KeloAPI
