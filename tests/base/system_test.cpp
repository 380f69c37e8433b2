#include "support/Shortage.hpp"

#include <KeloAPI/base/internal/System.hpp>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace KeloAPI::System {

namespace {

bool isReadable(const Event& event) {
    pollfd watched{event.descriptor(), POLLIN, 0};
    return poll(&watched, 1, 0) == 1;
}

bool staysInThisProgram(int descriptor) {
    return (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}

} // namespace

TEST(SystemEventTest, IsReadableFromSetUntilClear) {
    Event event;
    EXPECT_FALSE(event.isOpen());
    ASSERT_TRUE(event.open());
    EXPECT_TRUE(event.isOpen());
    EXPECT_TRUE(staysInThisProgram(event.descriptor()));
    for (int time = 0; time < 3; ++time) {
        EXPECT_FALSE(isReadable(event));
        event.set();
        EXPECT_TRUE(isReadable(event));
        EXPECT_TRUE(isReadable(event)) << "looking changes nothing";
        event.clear();
    }
    event.clear(); // where nothing is set, it does not wait
    EXPECT_FALSE(isReadable(event));
}

TEST(SystemEventDeathTest, TellsThatNoDescriptorIsLeft) {
    EXPECT_EXIT(
        {
            const testing::NoDescriptors shortage;
            Event event;
            const bool opened = event.open();
            std::_Exit(opened || event.isOpen() ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(SystemTest, AThreadHasTheFirstFifteenBytesOfItsNameWhereThatCanBe) {
    char name[16] = "";
    std::thread([&name] {
        nameThread("a name of sixteen or more");
        pthread_getname_np(pthread_self(), name, sizeof name);
    }).join();
    EXPECT_EQ(std::string_view(name) == "a name of sixte", canNameThreads());
}

TEST(SystemTest, ProgramsThatItStartsGetNoSocket) {
    const int made = openSocket(AF_INET, SOCK_STREAM, 0);
    ASSERT_GE(made, 0);
    EXPECT_TRUE(staysInThisProgram(made));
    close(made);
    EXPECT_LT(openSocket(-1, SOCK_STREAM, 0), 0);
    EXPECT_EQ(errno, EAFNOSUPPORT);
}

TEST(SystemTest, RandomBytesFillAllThatIsAskedFor) {
    std::array<unsigned char, 256> some{};
    std::array<unsigned char, 256> others{};
    ASSERT_TRUE(fillWithRandom(some));
    ASSERT_TRUE(fillWithRandom(others));
    EXPECT_NE(some, others);
    // 64 zeros in a row come once in 2^512 times.
    const auto end = some.end() - 64;
    EXPECT_TRUE(std::any_of(end, some.end(), [](unsigned char byte) { return byte != 0; }));
}

} // namespace KeloAPI::System
