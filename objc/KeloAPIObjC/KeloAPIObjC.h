// Everything of the Objective-C face.
#import <KeloAPIObjC/bridge/KLBridged.h>
#import <KeloAPIObjC/parsing/KLEmpty.h>
#import <KeloAPIObjC/parsing/KLPagingMetadata.h>
