#import <KeloAPIObjC/api/EndpointRequest.h>
#import <KeloAPIObjC/bridge/KLBridged.h>

/// The handle of a call that the HTTP layer carries. One that is made by a host is of no call.
@interface AlamofireEndpointRequest : KLBridged <EndpointRequest>
@end
