#import <KeloAPIObjC/files/FileEndpoint.h>
#import <KeloAPIObjC/files/FileManager.h>
#import <KeloAPIObjC/files/FileQueue.h>

#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

#include <filesystem>

using namespace KeloBridge;

namespace {

using Result = KeloAPI::FileDownloadResult;

/// Tells a `FileDownloadResult`.
KeloAPI::FileEndpoint::Completion downloaded(const Completion &heard) {
    return tellingOutcome(heard, [FileDownloadResult class],
                          [](const Result &result) { return result.success()->endpoint; });
}

/// Nil when the file has gone.
NSError *removed(KeloAPI::FileEndpoint &endpoint) {
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

void request(KeloAPI::FileQueue &queue, FileEndpoint *endpoint, NSURL *url, QueuePriority priority,
             const Completion &heard) {
    const auto wanted =
        requiredCase<KeloAPI::QueuePriority>(priority, QueuePriorityHigh, @"priority");
    const auto file = required<KeloAPI::FileEndpoint>(endpoint, @"endpoint");
    queue.download(file, requiredURL(url, @"url"), wanted, downloaded(heard));
}

} // namespace

@implementation FileDownloadResult

- (FileEndpoint *)endpoint {
    return [self content];
}

@end

@implementation FileEndpoint

KELO_STANDS_FOR(FileEndpoint, KeloAPI::FileEndpoint)
KELO_REFUSES("init(session:)", initWithSession, Session *, session)
KELO_READS(FileManager *, fileManager)
KELO_FIELD(NSArray *, subscribers, setSubscribers)
KELO_READS(NSURL *, localUrl, documentsFile)
KELO_CALLS(void, (downloadTo, NSURL *, destination), target, completion,
           native(self).download(requiredURL(destination, @"destination"), downloaded(heard)))

- (instancetype)initWithPath:(NSString *)path fileManager:(FileManager *)fileManager {
    return KELO_MAKE_ENDPOINT(text(path),
                              required<KeloAPI::FileManager>(fileManager, @"fileManager"));
}

- (void)delete {
    NSError *failure = removed(native(self));
    if (failure != nil) {
        NSDictionary *facts = [NSDictionary dictionaryWithObject:failure
                                                          forKey:NSUnderlyingErrorKey];
        [[NSException exceptionWithName:NSGenericException
                                 reason:[failure localizedDescription]
                               userInfo:facts] raise];
    }
}

- (BOOL)deleteAndReturnError:(NSError **)error {
    NSError *failure = removed(native(self));
    if (failure != nil && error != nullptr) {
        *error = failure;
    }
    return failure == nil;
}

@end

@implementation FileManager

KELO_STANDS_FOR(FileManager, KeloAPI::FileManager)
KELO_NO_INIT()
KELO_READS(NSString *, relativePath, documentsDirectory)

+ (FileManager *)sharedGroupManager:(NSString *)relativePath {
    return toObjC(KeloAPI::FileManager::sharedGroupManager(text(relativePath)));
}

- (void)kill {
    native(self).kill();
}

- (void)setDocumentsDirectory:(NSString *)documentsDirectory {
    native(self).setDocumentsDirectory(optionalText(documentsDirectory));
}

- (void)cleanDirectory:(NSInteger)maxCount {
    native(self).cleanDirectory(maxCount);
}

@end

@implementation FileQueue

KELO_STANDS_FOR(FileQueue, KeloAPI::FileQueue)
KELO_NO_INIT()
KELO_READS(NSArray *, queuedFiles)
KELO_CALLS(void, (download, FileEndpoint *, endpoint, to, NSURL *, url), target, completion,
           request(native(self), endpoint, url, QueuePriorityLow, heard))
KELO_CALLS(void,
           (download, FileEndpoint *, endpoint, to, NSURL *, url, priority, QueuePriority,
            priority),
           target, completion, request(native(self), endpoint, url, priority, heard))

+ (FileQueue *)withKey:(NSString *)key {
    return toObjC(KeloAPI::FileQueue::withKey(text(key)));
}

- (void)kill {
    native(self).kill();
}

@end
