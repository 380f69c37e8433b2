// A host's test file, with all that the library has and no name in its own way.
#include <KeloAPI/KeloAPI.hpp>

#include <gtest/gtest.h>

using namespace KeloAPI;

class HostsTest : public testing::Test {
protected:
    std::shared_ptr<fakes::ScriptedTransport> transport =
        std::make_shared<fakes::ScriptedTransport>();
    Date started = Date::now();
};

static int now() {
    return 0;
}

int hostsNow() {
    return now();
}
