#import <KeloAPIObjC/api/Endpoint.h>

#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Parameters.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Endpoint;
using Encoding = KeloAPI::ParameterEncoding;

NSString *const KLAPIStatusCodeKey = @"KLAPIStatusCodeKey";
NSString *const KLCaptchaUrlKey = @"KLCaptchaUrlKey";

namespace {

/// What it does by itself where it may be that a host overrides it.
const OwnEndpoint *own(const Native &endpoint) {
    return dynamic_cast<const OwnEndpoint *>(&endpoint);
}

} // namespace

@implementation Endpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithSession:(Session *)session {
    self = [super init];
    return holdMade(self, [&] { return makeEndpoint<Native>(shared<KeloAPI::Session>(session)); });
}

- (instancetype)init {
    NSString *name = [NSString stringWithFormat:@"KeloAPI.%@", NSStringFromClass([self class])];
    unimplemented("init()", [name UTF8String]);
}

- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:[Endpoint class]] && held<Native>(self) == held<Native>(other);
}

- (NSUInteger)hash {
    return std::hash<Native>()(held<Native>(self));
}

- (NSString *)path {
    return string(held<Native>(self).path());
}

- (void)setPath:(NSString *)path {
    held<Native>(self).setPath(text(path));
}

- (NSString *)method {
    return string(KeloAPI::name(held<Native>(self).method()));
}

- (void)setMethod:(NSString *)method {
    held<Native>(self).setMethod(methodOf(method));
}

- (ParameterEncoding)parameterEncoding {
    const Encoding encoding = held<Native>(self).parameterEncoding();
    if (encoding == Encoding::URL) {
        return ParameterEncodingURL;
    }
    return encoding == Encoding::JSON ? ParameterEncodingJSON : ParameterEncodingCustom;
}

- (void)setParameterEncoding:(ParameterEncoding)parameterEncoding {
    if (parameterEncoding != ParameterEncodingURL && parameterEncoding != ParameterEncodingJSON) {
        [NSException raise:NSInvalidArgumentException
                    format:@"no parameter encoding: %ld", static_cast<long>(parameterEncoding)];
    }
    held<Native>(self).setParameterEncoding(
        parameterEncoding == ParameterEncodingURL ? Encoding::URL : Encoding::JSON);
}

- (NSDictionary *)parameters {
    return parameters(held<Native>(self).parameters());
}

- (void)setParameters:(NSDictionary *)given {
    held<Native>(self).setParameters(parameters(given));
}

- (Session *)session {
    return wrap(held<Native>(self).session());
}

- (NSDictionary *)headerFields {
    const Native &endpoint = held<Native>(self);
    return KeloBridge::headerFields(own(endpoint) == nullptr ? endpoint.headerFields()
                                                             : own(endpoint)->ownHeaderFields());
}

- (NSMutableURLRequest *)URLRequest {
    const Native &endpoint = held<Native>(self);
    return urlRequest(own(endpoint) == nullptr ? endpoint.URLRequest()
                                               : own(endpoint)->ownURLRequest());
}

- (id<EndpointRequest>)requestWithTarget:(id)target action:(SEL)action {
    return wrap(held<Native>(self).request(textCompletion(Completion(target, action))));
}

- (id<EndpointRequest>)requestWithCompletionHandler:(KELO_BLOCK(NSString *, NSError *))handler {
    return wrap(held<Native>(self).request(textCompletion(Completion(handler))));
}

- (id<EndpointRequest>)requestWithParser:(AnyObjectJsonParser *)parser
                                  target:(id)target
                                  action:(SEL)action {
    return wrap(sendParsed(held<Native>(self), parser, Completion(target, action)));
}

- (id<EndpointRequest>)requestWithParser:(AnyObjectJsonParser *)parser
                       completionHandler:
                           (KELO_BLOCK(NSArray *, Metadata *, Timeline *, NSError *))handler {
    return wrap(sendParsed(held<Native>(self), parser, Completion(handler)));
}

- (id<EndpointRequest>)uploadWithParser:(AnyObjectJsonParser *)parser
                                   data:(NSData *)data
                                 target:(id)target
                                 action:(SEL)action {
    return wrap(uploadParsed(held<Native>(self), parser, data, Completion(target, action)));
}

- (id<EndpointRequest>)uploadWithParser:(AnyObjectJsonParser *)parser
                                   data:(NSData *)data
                      completionHandler:
                          (KELO_BLOCK(NSArray *, Metadata *, Timeline *, NSError *))handler {
    return wrap(uploadParsed(held<Native>(self), parser, data, Completion(handler)));
}

- (void)downloadWithDestinationUrl:(NSURL *)destinationUrl target:(id)target action:(SEL)action {
    held<Native>(self).download(requiredURL(destinationUrl),
                                downloadCompletion(Completion(target, action)));
}

- (void)downloadWithDestinationUrl:(NSURL *)destinationUrl
                 completionHandler:(KELO_BLOCK(NSURL *, NSError *))handler {
    held<Native>(self).download(requiredURL(destinationUrl),
                                downloadCompletion(Completion(handler)));
}

- (void)setDownloadProgressTarget:(id)target action:(SEL)action {
    held<Native>(self).setDownloadProgressHandler(downloadProgress(Completion(target, action)));
}

- (void)setDownloadProgressHandler:(KELO_BLOCK(int64_t, int64_t, int64_t))handler {
    held<Native>(self).setDownloadProgressHandler(downloadProgress(Completion(handler)));
}

@end
