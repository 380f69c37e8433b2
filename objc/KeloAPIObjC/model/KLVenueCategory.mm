#import <KeloAPIObjC/model/KLVenueCategory.h>

#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using VenueCategory = KeloAPI::KLVenueCategory;

@implementation KLVenueCategory

+ (void)load {
    add<VenueCategory>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVenueCategory");
}

- (instancetype)initWithCategoryId:(NSString *)categoryId shortName:(NSString *)shortName {
    self = [super init];
    return self == nil
               ? nil
               : hold(self, std::make_shared<VenueCategory>(text(categoryId), text(shortName)));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] {
        const auto category =
            std::make_shared<VenueCategory>(decodedText(coder, @"categoryId").value_or(""),
                                            decodedText(coder, @"shortName").value_or(""));
        category->iconUrl = decodedURL(coder, @"iconUrl");
        return category;
    });
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.categoryId forKey:@"categoryId"];
    [coder encodeObject:self.shortName forKey:@"shortName"];
    [coder encodeObject:self.iconUrl forKey:@"iconUrl"];
}

- (NSString *)categoryId {
    return string(held<VenueCategory>(self).categoryId());
}

- (NSString *)shortName {
    return string(held<VenueCategory>(self).shortName());
}

- (NSURL *)iconUrl {
    return url(held<VenueCategory>(self).iconUrl);
}

- (void)setIconUrl:(NSURL *)iconUrl {
    held<VenueCategory>(self).iconUrl = optionalURL(iconUrl);
}

@end
