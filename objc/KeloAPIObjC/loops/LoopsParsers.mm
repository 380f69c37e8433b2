#import <KeloAPIObjC/loops/LoopsParsers.h>

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>

using namespace KeloBridge;

KELO_PARSER(LoopDataParser)
KELO_PARSER(KLLongformParser)
KELO_PARSER(KLLongformViewsParser)
KELO_PARSER(KLEndlessLikesRangeParser)
KELO_PARSER(KLPostProcessStatusParser)
KELO_PARSER(KLVideoUploadParser)
