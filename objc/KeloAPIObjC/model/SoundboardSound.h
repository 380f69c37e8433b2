#import <KeloAPIObjC/bridge/KLBridged.h>

/// A short sound that users can put into their videos. Archives every property under its own name.
/// Does not change once made.
@interface SoundboardSound : KLBridged <NSCoding>

/// A text that is no URL makes `soundUrl` an empty one. `sourcePostId` may be nil.
- (instancetype)initWithName:(NSString *)name
                     soundId:(NSString *)soundId
                    soundUrl:(NSString *)soundUrl
                    featured:(BOOL)featured
                sourcePostId:(NSString *)sourcePostId;
/// Nil unless the address, the identifier and the name are there.
- (instancetype)initWithCoder:(NSCoder *)coder;
/// Stops the process.
- (instancetype)init;

/// "name".
@property(nonatomic, readonly) NSString *name;
/// "soundId", sent as text or as a number.
@property(nonatomic, readonly) NSString *soundId;
/// "soundUrl": never nil; empty where that is missing or no URL.
@property(nonatomic, readonly) NSURL *soundUrl;
/// "sourcePostId": the post that the sound was taken from; nil where there is none.
@property(nonatomic, readonly) NSString *sourcePostId;
/// "featured".
@property(nonatomic, readonly) BOOL featured;

@end
