#include <KeloAPI/base/Object.hpp>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using KeloAPI::Object;

namespace {

/// Notes when it goes, and what it can still read of the object.
class NotingCompanion final : public Object::Companion {
public:
    NotingCompanion(int& gone, const std::string* text, std::string& read)
        : _gone(gone)
        , _text(text)
        , _read(read) {}
    ~NotingCompanion() override {
        ++_gone;
        _read = _text == nullptr ? "" : *_text;
    }

private:
    int& _gone;
    const std::string* _text;
    std::string& _read;
};

struct TextObject final : Object {
    const std::string text = "a text that is longer than a string keeps in itself";
};

class ObjectTest : public testing::Test {
protected:
    std::unique_ptr<NotingCompanion> made(const std::string* text = nullptr) {
        return std::make_unique<NotingCompanion>(gone, text, read);
    }

    int gone = 0;
    std::string read;
};

} // namespace

TEST_F(ObjectTest, HasNoCompanionOfItsOwn) {
    EXPECT_EQ(TextObject().companion(), nullptr);
}

TEST_F(ObjectTest, KeepsItsCompanionToItsEnd) {
    auto object = std::make_unique<TextObject>();
    const auto& attached = object->attachCompanion(made());
    EXPECT_EQ(object->companion(), &attached);
    EXPECT_EQ(gone, 0);
    object.reset();
    EXPECT_EQ(gone, 1);
}

TEST_F(ObjectTest, TheFirstCompanionStays) {
    const TextObject object;
    const auto& first = object.attachCompanion(made());
    EXPECT_EQ(&object.attachCompanion(made()), &first);
    EXPECT_EQ(gone, 1);
}

TEST_F(ObjectTest, ACompanionThatGoesFirstCanReadTheObject) {
    const auto deleter = [](const TextObject* object) {
        object->deleteCompanion();
        EXPECT_EQ(object->companion(), nullptr);
        delete object;
    };
    std::shared_ptr<TextObject> object(new TextObject, deleter);
    object->attachCompanion(made(&object->text));
    object.reset();
    EXPECT_EQ(gone, 1);
    EXPECT_EQ(read, TextObject().text);
}

TEST_F(ObjectTest, OfManyThreadsOneAttaches) {
    for (int round = 0; round < 200; ++round) {
        const TextObject object;
        std::vector<int> goneOfEach(4, 0);
        std::vector<const Object::Companion*> seen(4, nullptr);
        std::vector<std::string> readOfEach(4);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < seen.size(); ++i) {
            threads.emplace_back([&, i] {
                seen[i] = &object.attachCompanion(
                    std::make_unique<NotingCompanion>(goneOfEach[i], nullptr, readOfEach[i]));
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        int lost = 0;
        for (std::size_t i = 0; i < seen.size(); ++i) {
            EXPECT_EQ(seen[i], object.companion());
            lost += goneOfEach[i];
        }
        ASSERT_EQ(lost, 3);
        object.deleteCompanion();
    }
}
