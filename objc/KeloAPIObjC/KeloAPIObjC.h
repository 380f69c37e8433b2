// Everything of the Objective-C face.
#import <KeloAPIObjC/api/Api.h>
#import <KeloAPIObjC/api/EndpointErrorHandler.h>
#import <KeloAPIObjC/api/Session.h>
#import <KeloAPIObjC/api/SessionDelegate.h>
#import <KeloAPIObjC/bridge/KLBridged.h>
#import <KeloAPIObjC/parsing/KLEmpty.h>
#import <KeloAPIObjC/parsing/KLPagingMetadata.h>
