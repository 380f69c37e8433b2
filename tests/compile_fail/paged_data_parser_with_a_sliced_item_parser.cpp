// expect: no matching
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/KLPagedDataParser.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
KLPagedDataParser<PostParser> make() {
    return KLPagedDataParser<PostParser>(PostParser());
}
#else
KLPagedDataParser<PostParser> make() {
    return KLPagedDataParser<PostParser>(std::make_shared<PostParser>());
}
#endif
