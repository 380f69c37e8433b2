#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

TEST(ContractDeathTest, AViolationPrintsOneLineAndAborts) {
    const std::string_view text = "only this and no more"; // which needs no end of its own
    EXPECT_EXIT(contractViolation(text.substr(0, 9)), ::testing::KilledBySignal(SIGABRT),
                "^KeloAPI: contract violated: only this\n$");
    require(true, "never printed");
    EXPECT_DEATH(require(false, "one is two"), "^KeloAPI: contract violated: one is two\n$");
}

TEST(NeverDestroyedTest, HoldsItsObjectAndNeverDestroysIt) {
    static int destroyed = 0;
    struct Held {
        explicit Held(int value)
            : number(value) {}
        ~Held() { ++destroyed; }
        int number;
    };
    {
        NeverDestroyed<Held> held(5);
        EXPECT_EQ(held->number, 5);
        (*held).number = 6;
        EXPECT_EQ(held->number, 6);
    }
    EXPECT_EQ(destroyed, 0);
}

} // namespace KeloAPI
