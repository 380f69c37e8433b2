#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>

namespace KeloAPI {

void KLVenueCategory::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText(categoryId, "categoryId");
    coder.encodeText(shortName, "shortName");
    coder.encodeURL(iconUrl, "iconUrl");
}

std::shared_ptr<KLVenueCategory> KLVenueCategory::initWithCoder(KeyedUnarchiver& coder) {
    auto category = std::make_shared<KLVenueCategory>(coder.decodeText("categoryId").value_or(""),
                                                      coder.decodeText("shortName").value_or(""));
    category->iconUrl = coder.decodeURL("iconUrl");
    return category;
}

} // namespace KeloAPI
