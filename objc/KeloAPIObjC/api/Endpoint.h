#import <KeloAPIObjC/api/EndpointRequest.h>
#import <KeloAPIObjC/bridge/KLBridged.h>

@class AnyObjectJsonParser, Metadata, Session, Timeline;

/// How a call's parameters become part of its request.
typedef NS_ENUM(NSInteger, ParameterEncoding) {
    /// Into the query string.
    ParameterEncodingURL = 0,
    /// Into the body, as one JSON object.
    ParameterEncodingJSON = 1,
    /// As the endpoint's class does by itself. Cannot be set.
    ParameterEncodingCustom = 2,
};

/// User info of a service's error: its status code, an NSNumber.
extern NSString *const KLAPIStatusCodeKey;
/// User info of a service's error with the code 419: the captcha's address, an NSURL.
extern NSString *const KLCaptchaUrlKey;

/// The base of every API call: it makes the request, reads the answer's envelope and hands the
/// outcome out. Two endpoints are equal when their paths are.
///
/// A target is kept alive until its action has been called, on the main queue: exactly once for
/// each send and never inside the call that sent; a retry that the session releases is another
/// send. A nil target or block hears nothing; one without the action's method raises
/// `NSInvalidArgumentException`. One endpoint serves one call at a time, from one thread at a time.
/// A derived class may override `headerFields` and `URLRequest`: the calls ask it, on the thread
/// that sends. They do not ask what else it overrides.
@interface Endpoint : KLBridged

/// An endpoint of no particular kind: set its properties, then send. A nil session raises
/// `NSInvalidArgumentException`.
- (instancetype)initWithSession:(Session *)session;
/// Not offered where a derived class says nothing else: stops the process.
- (instancetype)init;

/// Where the call goes: a path below the service's root, or a complete URL (a path that holds
/// "http" anywhere is taken for one). Empty by default. A complete URL gets all header fields of
/// the call, the session key among them, whatever its host: set only URLs of places that may have
/// the key.
@property(nonatomic, copy) NSString *path;
/// An HTTP method by its name; "GET" by default. Any other text raises
/// `NSInvalidArgumentException`.
@property(nonatomic, copy) NSString *method;
@property(nonatomic) ParameterEncoding parameterEncoding;
/// Names mapped to what JSON can tell; empty by default.
@property(nonatomic, copy) NSDictionary *parameters;
@property(nonatomic, readonly) Session *session;

/// The header fields of the call, made anew each time.
- (NSDictionary *)headerFields;
/// The request that is sent, made anew each time; without an address where the path should be a URL
/// and is none. What an override returns needs one of the HTTP methods; its address, method, header
/// fields, body and timeout are sent.
- (NSMutableURLRequest *)URLRequest;

/// Sends the call and hands out the answer's body as text: `action` takes an NSString, nil with an
/// error, and an NSError, nil without.
- (id<EndpointRequest>)requestWithTarget:(id)target action:(SEL)action;
/// Sends the call and parses the answer: `action` takes the items (an NSArray, empty with an
/// error), the `Metadata` (nil unless it was a list), the `Timeline` and the NSError, nil without.
/// A nil parser raises `NSInvalidArgumentException`.
- (id<EndpointRequest>)requestWithParser:(AnyObjectJsonParser *)parser
                                  target:(id)target
                                  action:(SEL)action;
/// The same with `data` as the body. A retry sends the call without it.
- (id<EndpointRequest>)uploadWithParser:(AnyObjectJsonParser *)parser
                                   data:(NSData *)data
                                 target:(id)target
                                 action:(SEL)action;
/// Sends the call and keeps the answer as the file `destinationUrl`: `action` takes that URL, and
/// the NSError if the file is not there. No envelope is read, and there is no handle.
- (void)downloadWithDestinationUrl:(NSURL *)destinationUrl target:(id)target action:(SEL)action;
/// While the bytes of a later download arrive, `action` is called on the main queue with three
/// int64_t: bytes since the last report, bytes so far, and bytes expected in all (-1 while that is
/// unknown). The target is kept alive until it is replaced or the endpoint has gone. A nil target
/// for none, as by default.
- (void)setDownloadProgressTarget:(id)target action:(SEL)action;

#if __has_feature(blocks)
- (id<EndpointRequest>)requestWithCompletionHandler:(void (^)(NSString *text,
                                                              NSError *error))completionHandler;
- (id<EndpointRequest>)requestWithParser:(AnyObjectJsonParser *)parser
                       completionHandler:(void (^)(NSArray *data, Metadata *metadata,
                                                   Timeline *timeline,
                                                   NSError *error))completionHandler;
- (id<EndpointRequest>)uploadWithParser:(AnyObjectJsonParser *)parser
                                   data:(NSData *)data
                      completionHandler:(void (^)(NSArray *data, Metadata *metadata,
                                                  Timeline *timeline,
                                                  NSError *error))completionHandler;
- (void)downloadWithDestinationUrl:(NSURL *)destinationUrl
                 completionHandler:(void (^)(NSURL *url, NSError *error))completionHandler;
- (void)setDownloadProgressHandler:(void (^)(int64_t bytes, int64_t total,
                                             int64_t expected))progressHandler;
#endif

@end
