#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

TEST(ContractDeathTest, AViolationPrintsOneLineAndAborts) {
    EXPECT_EXIT(contractViolation("the moon is full"), ::testing::KilledBySignal(SIGABRT),
                "^KeloAPI: contract violated: the moon is full\n$");
}

TEST(ContractDeathTest, RequireStopsOnlyWhereItDoesNotHold) {
    require(true, "never printed");
    EXPECT_DEATH(require(false, "one is two"), "^KeloAPI: contract violated: one is two\n$");
}

TEST(ContractDeathTest, TheTextNeedsNoEndOfItsOwn) {
    const std::string_view text = "only this and no more";
    EXPECT_DEATH(contractViolation(text.substr(0, 9)), "violated: only this\n$");
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
