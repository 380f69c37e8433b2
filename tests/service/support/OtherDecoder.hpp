#pragma once

#include "service/media/Scene.hpp"

#include <string>

namespace KeloServiceTest {

/// Whether this machine has ffmpeg.
bool hasOtherDecoder();

/// The frames that ffmpeg sees in a video: the planes of each, one after the other. A complaint of
/// ffmpeg's is a failure of the test.
std::string otherDecodersFrames(const std::string& file);

/// The same for the scene itself, ten frames per second.
std::string sceneFrames(const KeloService::Scene& scene, int side);

} // namespace KeloServiceTest
