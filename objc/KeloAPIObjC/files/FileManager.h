#import <KeloAPIObjC/bridge/KLBridged.h>

/// One cache directory for downloaded files, in the container that the application shares with its
/// extensions: one flat level of files, whose age is their date of modification. What fails goes to
/// the diagnostics as one line. One thread at a time, the registry of managers included; the
/// directory may be asked for from any.
@interface FileManager : KLBridged

/// The one manager for `relativePath`, made at the first request. The path is put behind the
/// container's as it is, so it brings its own "/" on both ends.
+ (FileManager *)sharedGroupManager:(NSString *)relativePath;
/// Not offered: stops the process.
- (instancetype)init;

/// Forgets the manager that is registered under this one's relative path, whichever it is.
- (void)kill;

@property(nonatomic, readonly) NSString *relativePath;
/// The directory's path with its "/" at the end, found and created at the first call; nil when the
/// application has no group container. One that is set is taken as it is; a relative one is below
/// the working directory.
@property(nonatomic, copy) NSString *documentsDirectory;

/// Deletes the oldest files and keeps the newest `maxCount` and one more; a negative number keeps
/// none. A directory in the directory counts as a file. An entry that no file endpoint leads to (a
/// "?" in its name) stays. What killed processes left of their downloads goes.
- (void)cleanDirectory:(NSInteger)maxCount;

@end
