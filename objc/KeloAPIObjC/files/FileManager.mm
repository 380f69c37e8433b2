#import <KeloAPIObjC/files/FileManager.h>

#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::FileManager;

@implementation FileManager

+ (void)load {
    add<Native>(self);
}

+ (FileManager *)sharedGroupManager:(NSString *)relativePath {
    return wrap(Native::sharedGroupManager(text(relativePath)));
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.FileManager");
}

- (void)kill {
    held<Native>(self).kill();
}

- (NSString *)relativePath {
    return string(held<Native>(self).relativePath());
}

- (NSString *)documentsDirectory {
    return string(held<Native>(self).documentsDirectory());
}

- (void)setDocumentsDirectory:(NSString *)documentsDirectory {
    held<Native>(self).setDocumentsDirectory(optionalText(documentsDirectory));
}

- (void)cleanDirectory:(NSInteger)maxCount {
    held<Native>(self).cleanDirectory(maxCount);
}

@end
