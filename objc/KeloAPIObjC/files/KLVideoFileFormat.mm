#import <KeloAPIObjC/files/KLVideoFileFormat.h>

#include <KeloAPI/files/KLVideoFileFormat.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using FileFormat = KeloAPI::KLVideoFileFormat;

@implementation KLVideoFileFormat

+ (NSString *)MP4 {
    return string(FileFormat::MP4);
}

+ (NSString *)HLS {
    return string(FileFormat::HLS);
}

+ (NSString *)PREVIEW {
    return string(FileFormat::PREVIEW);
}

@end
