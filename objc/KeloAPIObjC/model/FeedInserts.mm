#import <KeloAPIObjC/model/KLFeedInsert.h>
#import <KeloAPIObjC/model/KLPostsMosaic.h>
#import <KeloAPIObjC/model/KLSolicitation.h>
#import <KeloAPIObjC/model/KLUrlAction.h>
#import <KeloAPIObjC/model/KLUserMosaic.h>

#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;
using PagedData = KeloAPI::KLPagedData;

static KeloAPI::KLPostsMosaicType layout(NSInteger type) {
    return requiredCase<KeloAPI::KLPostsMosaicType>(type, KLPostsMosaicTypeSmallThumbnails,
                                                    @"layout of a mosaic");
}

@implementation KLFeedInsert

KELO_STANDS_FOR(KLFeedInsert, KeloAPI::KLFeedInsert)
KELO_NO_INIT()
KELO_READS(NSString *, reference)
KELO_READS(BOOL, closeable)

- (instancetype)initWithReference:(NSString *)reference closeable:(BOOL)closeable {
    return KELO_MAKE(text(reference), closeable != NO);
}

@end

@implementation KLPostsMosaic

KELO_STANDS_FOR(KLPostsMosaic, KeloAPI::KLPostsMosaic)
KELO_NO_INIT()
KELO_REFUSES("init(reference:closeable:)", initWithReference, NSString *, reference, closeable,
             BOOL, closeable)
KELO_READS(KLPagedData *, posts)
KELO_READS(NSString *, title, subtitle, link)
KELO_READS(KLPostsMosaicType, type)
KELO_READS(BOOL, pinnable)

- (instancetype)initWithPosts:(KLPagedData *)posts
                        title:(NSString *)title
                  description:(NSString *)description
                         link:(NSString *)link
                    reference:(NSString *)reference
                    closeable:(BOOL)closeable
                         type:(KLPostsMosaicType)type
                     pinnable:(BOOL)pinnable {
    return KELO_MAKE(required<PagedData>(posts, @"posts"), text(title), text(description),
                     text(link), text(reference), closeable != NO, layout(type), pinnable != NO);
}

@end

@implementation KLUserMosaic

KELO_STANDS_FOR(KLUserMosaic, KeloAPI::KLUserMosaic)
KELO_NO_INIT()
KELO_REFUSES("init(reference:closeable:)", initWithReference, NSString *, reference, closeable,
             BOOL, closeable)
KELO_READS(KLPagedData *, users)
KELO_READS(NSString *, title, subtitle, link)

- (instancetype)initWithUsers:(KLPagedData *)users
                        title:(NSString *)title
                  description:(NSString *)description
                         link:(NSString *)link
                    reference:(NSString *)reference
                    closeable:(BOOL)closeable {
    return KELO_MAKE(required<PagedData>(users, @"users"), text(title), text(description),
                     text(link), text(reference), closeable != NO);
}

@end

@implementation KLUrlAction

KELO_STANDS_FOR(KLUrlAction, KeloAPI::KLUrlAction)
KELO_NO_INIT()
KELO_REFUSES("init(reference:closeable:)", initWithReference, NSString *, reference, closeable,
             BOOL, closeable)
KELO_READS(NSString *, title, actionTitle, details, closeUrlPath)
KELO_READS(NSURL *, actionUrl, backgroundImage, backgroundVideo, actionIcon)

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
    return KELO_MAKE(text(reference), text(title), text(actionTitle),
                     requiredURL(actionUrl, @"actionUrl"), optionalBool(closeable),
                     optionalURL(backgroundImage), optionalURL(backgroundVideo),
                     optionalText(details), optionalURL(actionIcon), optionalText(closeUrlPath));
}

@end

@implementation KLSolicitation

KELO_STANDS_FOR(KLSolicitation, KeloAPI::KLSolicitation)
KELO_NO_INIT()
KELO_REFUSES("init(reference:closeable:)", initWithReference, NSString *, reference, closeable,
             BOOL, closeable)
KELO_READS(NSString *, closeUrlPath)

- (instancetype)initWithReference:(NSString *)reference
                        closeable:(NSNumber *)closeable
                     closeUrlPath:(NSString *)closeUrlPath {
    return KELO_MAKE(text(reference), optionalBool(closeable), optionalText(closeUrlPath));
}

@end
