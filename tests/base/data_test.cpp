#include <KeloAPI/base/Data.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

TEST(DataTest, ByDefaultHasNoBytes) {
    const Data data;
    EXPECT_TRUE(data.empty());
    EXPECT_EQ(data.size(), 0U);
    EXPECT_EQ(data.text(), "");
}

TEST(DataTest, TakesATextOverAndSharesItBetweenCopies) {
    std::string text = "a text that is too long to stand within the string object itself";
    const char* const address = text.data();
    const Data data(std::move(text));
    const Data copy = data;
    EXPECT_EQ(data.text().data(), address) << "the bytes are not copied";
    EXPECT_EQ(copy.text().data(), address);
    EXPECT_EQ(data.size(), 64U);
    EXPECT_EQ(data.bytes().size(), 64U);
    EXPECT_FALSE(data.empty());
    const Data shortOne = Data(std::string("a\0b", 3));
    EXPECT_EQ(shortOne.text(), std::string_view("a\0b", 3));
}

TEST(DataTest, KeepsTheOwnerOfForeignBytesAlive) {
    auto owner = std::make_shared<std::string>("shared");
    const std::weak_ptr<std::string> watch = owner;
    {
        Data data(owner, std::as_bytes(std::span(owner->data(), 4)));
        owner.reset();
        const Data copy = data;
        data = Data();
        EXPECT_EQ(copy.text(), "shar");
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_TRUE(watch.expired());
}

} // namespace KeloAPI
