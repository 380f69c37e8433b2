#import <KeloAPIObjC/files/FileQueue.h>

#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/FileDownloads.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::FileQueue;

static void request(FileQueue *queue, FileEndpoint *endpoint, NSURL *url, QueuePriority priority,
                    const Completion &heard) {
    const auto wanted = KeloAPI::queuePriorityOf(priority);
    const auto file = shared<KeloAPI::FileEndpoint>(endpoint);
    if (!wanted || file == nullptr) {
        [NSException raise:NSInvalidArgumentException
                    format:@"no request: %@ at %ld", endpoint, static_cast<long>(priority)];
    }
    held<Native>(queue).download(file, requiredURL(url), *wanted, fileCompletion(heard));
}

@implementation FileQueue

+ (void)load {
    add<Native>(self);
}

+ (FileQueue *)withKey:(NSString *)key {
    return wrap(Native::withKey(text(key)));
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.FileQueue");
}

- (void)download:(FileEndpoint *)endpoint to:(NSURL *)url target:(id)target action:(SEL)action {
    request(self, endpoint, url, QueuePriorityLow, Completion(target, action));
}

- (void)download:(FileEndpoint *)endpoint
              to:(NSURL *)url
      completion:(KELO_BLOCK(FileDownloadResult *))completion {
    request(self, endpoint, url, QueuePriorityLow, Completion(completion));
}

- (void)download:(FileEndpoint *)endpoint
              to:(NSURL *)url
        priority:(QueuePriority)priority
          target:(id)target
          action:(SEL)action {
    request(self, endpoint, url, priority, Completion(target, action));
}

- (void)download:(FileEndpoint *)endpoint
              to:(NSURL *)url
        priority:(QueuePriority)priority
      completion:(KELO_BLOCK(FileDownloadResult *))completion {
    request(self, endpoint, url, priority, Completion(completion));
}

- (void)kill {
    held<Native>(self).kill();
}

- (NSArray *)queuedFiles {
    return array(held<Native>(self).queuedFiles());
}

@end
