#import <Foundation/Foundation.h>

/// How soon a file is wanted.
typedef NS_ENUM(NSInteger, QueuePriority) {
    QueuePriorityLow = 0,
    QueuePriorityNormal = 1,
    QueuePriorityHigh = 2,
};
