#import "objc/HostCode.h"

@implementation NameParser

- (NSInteger)asked {
    return _asked;
}

- (id)parse:(NSDictionary *)json error:(NSError **)error {
    _asked++;
    NSString *name = [json objectForKey:@"name"];
    NSString *how = [json objectForKey:@"how"];
    if (name != nil) {
        return name;
    }
    if ([how isEqual:@"insufficient"]) {
        *error = [NSError errorWithDomain:@"KeloAPI.JsonParseError" code:3 userInfo:nil];
    } else if ([how isEqual:@"own"]) {
        NSDictionary *facts =
            [NSDictionary dictionaryWithObjectsAndKeys:@"no name", @"why", @"It has no name",
                                                       NSLocalizedDescriptionKey, nil];
        *error = [NSError errorWithDomain:@"host" code:71 userInfo:facts];
    } else if ([how isEqual:@"raise"]) {
        [NSException raise:NSRangeException format:@"out of names"];
    } else if ([how isEqual:@"super"]) {
        return [super parse:json error:error];
    }
    return nil;
}

@end

@implementation IdleParser
@end

@implementation TagParser

- (id)parse:(NSDictionary *)json error:(NSError **)error {
    NSString *name = [json objectForKey:@"name"];
    if (name == nil) {
        *error = [NSError errorWithDomain:@"host" code:1 userInfo:nil];
        return nil;
    }
    return [[[KLTag alloc] initWithName:name] autorelease];
}

@end

@implementation Unreadable

- (void)encodeWithCoder:(NSCoder *)coder {
    (void)coder; // with nothing in it
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    [self release];
    [NSException raise:NSRangeException format:@"unreadable from %@", coder];
    return nil;
}

@end

NSArray *KeloEnumerated(KLPagedData *data) {
    NSMutableArray *seen = [NSMutableArray array];
    for (id element in data) {
        [seen addObject:element];
    }
    return seen;
}

NSArray *KeloEnumeratedWhileRemoving(KLPagedData *data) {
    NSMutableArray *seen = [NSMutableArray array];
    for (id element in data) {
        [seen addObject:element];
        while (data.count > 0) {
            [data removeAtIndex:0];
        }
    }
    return seen;
}
