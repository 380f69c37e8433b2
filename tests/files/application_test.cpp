#include <KeloAPI/files/Application.hpp>

#include <gtest/gtest.h>

#include <cstdlib>

namespace KeloAPI {

class ApplicationTest : public ::testing::Test {
protected:
    ApplicationTest() {
        setenv("HOME", "/home/mara", 1);
        unsetenv("XDG_DATA_HOME");
    }
    ~ApplicationTest() override {
        Application::setGroupContainers({});
        Application::setBundleIdentifier(std::nullopt);
    }

    static std::optional<std::string> container() {
        const auto url = Application::groupContainer("group.one");
        return url ? url->filePath() : std::nullopt;
    }
};

TEST_F(ApplicationTest, HasTheIdentifierThatTheHostSets) {
    EXPECT_FALSE(Application::bundleIdentifier());
    Application::setBundleIdentifier("org.example.loops");
    EXPECT_EQ(Application::bundleIdentifier(), "org.example.loops");
}

TEST_F(ApplicationTest, KeepsContainersInTheUsersDataDirectory) {
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
    setenv("XDG_DATA_HOME", "/data of mine", 1);
    EXPECT_EQ(container(), "/data of mine/group.one");
}

TEST_F(ApplicationTest, IgnoresVariablesThatNameNoAbsolutePath) {
    setenv("XDG_DATA_HOME", "data", 1);
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
    setenv("XDG_DATA_HOME", "", 1);
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
    setenv("HOME", "home", 1);
    EXPECT_FALSE(container());
    unsetenv("HOME");
    EXPECT_FALSE(container());
}

TEST_F(ApplicationTest, AsksTheHostForContainers) {
    Application::setGroupContainers([](const std::string& group) {
        return group == "group.one" ? URL::parse("file:///containers/1") : std::nullopt;
    });
    EXPECT_EQ(container(), "/containers/1");
    EXPECT_FALSE(Application::groupContainer("group.two"));
    Application::setGroupContainers({});
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
}

} // namespace KeloAPI
