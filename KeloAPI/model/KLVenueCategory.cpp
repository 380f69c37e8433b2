#include <KeloAPI/model/KLVenueCategory.hpp>

#include <utility>

namespace KeloAPI {

KLVenueCategory::KLVenueCategory(std::string categoryId, std::string shortName)
    : _categoryId(std::move(categoryId))
    , _shortName(std::move(shortName)) {}

KLVenueCategory::~KLVenueCategory() = default;

} // namespace KeloAPI
