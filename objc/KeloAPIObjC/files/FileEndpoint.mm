#import <KeloAPIObjC/files/FileEndpoint.h>

#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/FileDownloads.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Outcomes.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <filesystem>

using namespace KeloBridge;
using Native = KeloAPI::FileEndpoint;

KeloAPI::FileEndpoint::Completion KeloBridge::fileCompletion(const Completion &heard) {
    return [heard](const KeloAPI::FileDownloadResult &result) {
        const Pool pool;
        heard(outcome(
            [FileDownloadResult class], result,
            [](const KeloAPI::FileDownloadSuccess &success) { return wrap(success.endpoint); }));
    };
}

/// Nil when the file has gone.
static NSError *removed(Native &endpoint) {
    try {
        endpoint.deleteFile();
        return nil;
    } catch (const std::filesystem::filesystem_error &failure) {
        NSMutableDictionary *facts = [NSMutableDictionary dictionary];
        [facts setObject:string(failure.code().message()) forKey:NSLocalizedDescriptionKey];
        [facts setObject:string(failure.path1().string()) forKey:NSFilePathErrorKey];
        return [NSError errorWithDomain:NSPOSIXErrorDomain
                                   code:failure.code().value()
                               userInfo:facts];
    }
}

@implementation FileDownloadResult

- (FileEndpoint *)endpoint {
    return [self content];
}

@end

@implementation FileEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithPath:(NSString *)path fileManager:(FileManager *)fileManager {
    return holdMade(self, [&] {
        return makeEndpoint<Native>(text(path), shared<KeloAPI::FileManager>(fileManager));
    });
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.FileEndpoint");
}

- (FileManager *)fileManager {
    return wrap(held<Native>(self).fileManager());
}

- (NSArray *)subscribers {
    return array(held<Native>(self).subscribers);
}

- (void)setSubscribers:(NSArray *)subscribers {
    held<Native>(self).subscribers = objects<Object>(subscribers);
}

- (void)downloadTo:(NSURL *)destination target:(id)target action:(SEL)action {
    held<Native>(self).download(requiredURL(destination),
                                fileCompletion(Completion(target, action)));
}

- (void)downloadTo:(NSURL *)destination completion:(KELO_BLOCK(FileDownloadResult *))completion {
    held<Native>(self).download(requiredURL(destination), fileCompletion(Completion(completion)));
}

- (NSURL *)localUrl {
    return url(held<Native>(self).localUrl());
}

- (void)delete {
    NSError *failure = removed(held<Native>(self));
    if (failure != nil) {
        NSDictionary *facts = [NSDictionary dictionaryWithObject:failure
                                                          forKey:NSUnderlyingErrorKey];
        [[NSException exceptionWithName:NSGenericException
                                 reason:[failure localizedDescription]
                               userInfo:facts] raise];
    }
}

- (BOOL)deleteAndReturnError:(NSError **)error {
    NSError *failure = removed(held<Native>(self));
    if (failure != nil && error != nullptr) {
        *error = failure;
    }
    return failure == nil;
}

- (NSURL *)documentsFile {
    return url(held<Native>(self).documentsFile());
}

@end
