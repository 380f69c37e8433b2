#import <KeloAPIObjC/model/KLUrlAction.h>

#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using UrlAction = KeloAPI::KLUrlAction;

namespace {

constexpr const char *className = "KeloAPI.KLUrlAction";

} // namespace

@implementation KLUrlAction

+ (void)load {
    add<UrlAction>(self);
}

- (instancetype)init {
    unimplemented("init()", className);
}

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable {
    unimplemented("init(reference:closeable:)", className);
}

- (instancetype)initWithReference:(NSString *)reference
                            title:(NSString *)title
                      actionTitle:(NSString *)actionTitle
                        actionUrl:(NSURL *)actionUrl
                        closeable:(NSNumber *)closeable
                  backgroundImage:(NSURL *)backgroundImage
                  backgroundVideo:(NSURL *)backgroundVideo
                          details:(NSString *)details
                       actionIcon:(NSURL *)actionIcon
                     closeUrlPath:(NSString *)closeUrlPath {
    return holdMade(self, [&] {
        return std::make_shared<UrlAction>(
            text(reference), text(title), text(actionTitle), requiredURL(actionUrl),
            optionalBool(closeable), optionalURL(backgroundImage), optionalURL(backgroundVideo),
            optionalText(details), optionalURL(actionIcon), optionalText(closeUrlPath));
    });
}

- (NSString *)title {
    return string(held<UrlAction>(self).title());
}

- (NSString *)actionTitle {
    return string(held<UrlAction>(self).actionTitle());
}

- (NSURL *)actionUrl {
    return url(held<UrlAction>(self).actionUrl());
}

- (NSURL *)backgroundImage {
    return url(held<UrlAction>(self).backgroundImage());
}

- (NSURL *)backgroundVideo {
    return url(held<UrlAction>(self).backgroundVideo());
}

- (NSString *)details {
    return string(held<UrlAction>(self).details());
}

- (NSURL *)actionIcon {
    return url(held<UrlAction>(self).actionIcon());
}

- (NSString *)closeUrlPath {
    return string(held<UrlAction>(self).closeUrlPath());
}

@end
