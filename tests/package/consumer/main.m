#import <KeloAPIObjC/KeloAPIObjC.h>

#include <stdio.h>

int main(void) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSDictionary *json = [NSDictionary dictionaryWithObject:[NSNumber numberWithInt:3]
                                                     forKey:@"count"];
    KLPagingMetadata *metadata = [[[KLPagingMetadata alloc] initWithJson:json] autorelease];
    NSArray *posts = [NSArray arrayWithObject:[[KLEmpty new] autorelease]];
    KLPagedData *alone = [[[KLPagedData alloc] initWithData:posts] autorelease];
    KLPagedData *page = [[[KLPagedData alloc] initWithData:posts metadata:metadata] autorelease];
    printf("%d of %d read\n", (int)[[alone data] count], (int)[[page metadata] count]);
    // An archive names a class that no code of the host does.
    BOOL found = NSClassFromString(@"KLVenue") != Nil;
    [pool drain];
    return found ? 0 : 1;
}
