// expect: deleted
#include <KeloAPI/model/PostThumbnail.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
const PostThumbnail made;
#else
const PostThumbnail made(*URL::parse("a"), 1, 2);
#endif
