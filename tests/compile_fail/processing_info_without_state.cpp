// expect: deleted
#include <KeloAPI/loops/KLVideoUploadProcessingInfo.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
KLVideoUploadProcessingInfo object;
#else
KLVideoUploadProcessingInfo object(KLVideoUploadProcessingState::Pending);
#endif
