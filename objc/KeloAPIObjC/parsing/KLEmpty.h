#import <KeloAPIObjC/bridge/KLBridged.h>

/// What an answer without model data gives.
@interface KLEmpty : KLBridged
@end
