// GNUstep's headers ask for this one where the compiler has blocks. GCC's runtime has none of its
// own: the one that comes with the blocks runtime serves.
#include <Block.h>
