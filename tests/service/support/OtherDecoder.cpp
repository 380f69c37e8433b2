#include "support/OtherDecoder.hpp"

#include "support/Process.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace KeloServiceTest {
namespace {

Process::Outcome runShell(const std::string& command) {
    return Process({"-c", command}, "/bin/sh").wait();
}

} // namespace

bool hasOtherDecoder() {
    return runShell("command -v ffmpeg").code == 0;
}

std::string otherDecodersFrames(const std::string& file) {
    const TemporaryFolder folder;
    const std::string frames = folder.file("frames");
    std::string command = "ffmpeg -v error -i '";
    command.append(file).append("' -f rawvideo -pix_fmt yuv420p '");
    command.append(frames).append("' </dev/null");
    const Process::Outcome outcome = runShell(command);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    std::ifstream stream(frames, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string sceneFrames(const KeloService::Scene& scene, int side) {
    std::string frames;
    for (std::uint32_t time = 0; time < scene.duration(); time += 100) {
        const KeloService::Picture picture = scene.picture(side, time);
        frames.append(picture.luma).append(picture.blue).append(picture.red);
    }
    return frames;
}

} // namespace KeloServiceTest
