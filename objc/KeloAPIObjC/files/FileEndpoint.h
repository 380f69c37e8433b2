#import <KeloAPIObjC/api/Endpoint.h>
#import <KeloAPIObjC/api/EndpointResult.h>

@class FileEndpoint, FileManager;

/// How a download ended.
@interface FileDownloadResult : EndpointResult
/// The endpoint whose file is there now; its `localUrl` says where. Nil with an error.
@property(nonatomic, readonly) FileEndpoint *endpoint;
@end

/// One file of the service, a video as a rule, and its place in a cache directory. Its path is
/// where the file is fetched: the complete URL as a rule. Two endpoints with the same path are the
/// same file.
@interface FileEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`. A nil manager raises
/// `NSInvalidArgumentException`.
- (instancetype)initWithPath:(NSString *)path fileManager:(FileManager *)fileManager;
/// Not offered: stops the process.
- (instancetype)initWithSession:(Session *)session;

@property(nonatomic, readonly) FileManager *fileManager;
/// For those who wait for this file; the library itself neither reads nor changes it.
@property(nonatomic, copy) NSArray *subscribers;

/// Makes the file available at the file URL `destination`. `action` takes a `FileDownloadResult`:
/// at once, inside this call, for a file that is there already; otherwise on the main queue.
- (void)downloadTo:(NSURL *)destination target:(id)target action:(SEL)action;
#if __has_feature(blocks)
- (void)downloadTo:(NSURL *)destination completion:(void (^)(FileDownloadResult *result))completion;
#endif

/// Where the file is: as soon as it has been downloaded or found in the cache, that place, even if
/// the file has gone since. Nil before.
- (NSURL *)localUrl;

/// Removes the file that `localUrl` names, and a directory with all that is in it; where there is
/// none, it does nothing. `localUrl` stays what it was. Raises `NSGenericException`, with the error
/// under `NSUnderlyingErrorKey`, when the system refuses.
- (void)delete;
/// The same without an exception: NO with an error of `NSPOSIXErrorDomain` when the system refuses.
- (BOOL)deleteAndReturnError:(NSError **)error;

/// The file's place in the cache: the last component of the path, without what follows a "?", put
/// behind the manager's directory. An empty name gives the directory itself. Nil without a
/// directory, and for the names "." and "..", which name no file.
- (NSURL *)documentsFile;

@end
