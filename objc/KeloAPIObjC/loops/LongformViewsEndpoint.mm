#import <KeloAPIObjC/loops/LongformViewsEndpoint.h>

#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::LongformViewsEndpoint;

static id fetchViews(LongformViewsEndpoint *endpoint, const Completion &heard) {
    return wrap(held<Native>(endpoint).fetchViews(
        [heard](const std::shared_ptr<KeloAPI::KLLongformViews> &views,
                const std::optional<KeloAPI::Error> &failure) {
            const Pool pool;
            heard(wrap(views), error(failure));
        }));
}

@implementation LongformViewsEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithLongformId:(NSString *)longformId {
    return hold(self, makeEndpoint<Native>(text(longformId)));
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.LongformViewsEndpoint");
}

- (id<EndpointRequest>)fetchViewsWithTarget:(id)target action:(SEL)action {
    return fetchViews(self, Completion(target, action));
}

- (id<EndpointRequest>)fetchViewsWithCompletion:(KELO_BLOCK(KLLongformViews *,
                                                            NSError *))completion {
    return fetchViews(self, Completion(completion));
}

- (id<EndpointRequest>)submitViewWithTarget:(id)target action:(SEL)action {
    return wrap(held<Native>(self).submitView(errorCompletion(Completion(target, action))));
}

- (id<EndpointRequest>)submitViewWithCompletion:(KELO_BLOCK(NSError *))completion {
    return wrap(held<Native>(self).submitView(errorCompletion(Completion(completion))));
}

@end
