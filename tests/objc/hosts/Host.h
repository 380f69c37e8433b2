#import <KeloAPIObjC/KeloAPIObjC.h>

#include <stdio.h>
#include <stdlib.h>

/// Ends the process, with the place, where it does not hold.
#define CHECK(holds)                                                                               \
    do {                                                                                           \
        if (!(holds)) {                                                                            \
            fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #holds);              \
            exit(1);                                                                               \
        }                                                                                          \
    } while (0)

/// What a leak checker need not tell of.
void KeloMakeWhatStays(void);

/// What a host does; each is called with a pool that is drained after it.
typedef struct {
    const char *name;
    void (*run)(void);
} HostCase;

/// Each ends with one that has no name.
extern const HostCase ownershipCases[];
extern const HostCase exceptionCases[];
extern const HostCase runtimeCases[];
