// expect: deleted
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
AnyObjectJsonParser use(const AnyObjectParserAdaptor& adaptor) {
    return adaptor;
}
#else
const AnyObjectJsonParser& use(const AnyObjectParserAdaptor& adaptor) {
    return adaptor;
}
#endif
