// Everything of the Objective-C face.
#import <KeloAPIObjC/bridge/KLBridged.h>
#import <KeloAPIObjC/model/KLChannel.h>
#import <KeloAPIObjC/model/KLEntity.h>
#import <KeloAPIObjC/model/KLPostSource.h>
#import <KeloAPIObjC/model/KLTag.h>
#import <KeloAPIObjC/model/PostThumbnail.h>
#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>
#import <KeloAPIObjC/parsing/KLEmpty.h>
#import <KeloAPIObjC/parsing/KLPagedData.h>
#import <KeloAPIObjC/parsing/KLPagingMetadata.h>
