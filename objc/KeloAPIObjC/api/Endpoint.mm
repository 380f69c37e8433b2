#import <KeloAPIObjC/api/Endpoint.h>

#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Bytes.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
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

NSDictionary *fields(const KeloAPI::HeaderFields &known) {
    NSMutableDictionary *made = [NSMutableDictionary dictionary];
    for (const auto &[name, content] : known) {
        [made setObject:string(content) forKey:string(name)];
    }
    return made;
}

} // namespace

@implementation Endpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithSession:(Session *)session {
    self = [super init];
    return holdMade(self, [&] { return Native::create(shared<KeloAPI::Session>(session)); });
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
    return fields(held<Native>(self).headerFields());
}

- (NSMutableURLRequest *)URLRequest {
    const auto request = held<Native>(self).URLRequest();
    NSMutableURLRequest *made = [NSMutableURLRequest requestWithURL:url(request.url)];
    [made setHTTPMethod:string(KeloAPI::name(request.method))];
    [made setAllHTTPHeaderFields:fields(request.headerFields)];
    [made setHTTPBody:request.body ? bytes(*request.body) : nil];
    return made;
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
