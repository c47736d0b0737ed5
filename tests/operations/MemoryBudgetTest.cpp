#include "operations/MemoryBudget.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

using namespace wendrel;

// Sizes share the budget until it is full; a giant takes all of it, and nothing is lost.
TEST(MemoryBudget, ReservationsShareTheBudgetAndALargeOneWaitsForRoom)
{
    MemoryBudget budget(64);
    {
        const MemoryBudget::Reservation a(budget, 20);
        const MemoryBudget::Reservation b(budget, 30);
        EXPECT_EQ(budget.inUse(), 50);
    }
    {
        const MemoryBudget::Reservation giant(budget, 5'000);
        EXPECT_EQ(budget.inUse(), 64);
    }

    std::atomic_bool secondHolds{false};
    std::optional<std::jthread> second;
    {
        const MemoryBudget::Reservation first(budget, 40);
        second.emplace([&] {
            const MemoryBudget::Reservation reservation(budget, 40);
            secondHolds = true;
        });
        // The second can't have its share while the first holds 40 of 64, however long it tries.
        for (int check = 0; check < 50; ++check) {
            std::this_thread::yield();
            ASSERT_FALSE(secondHolds);
        }
        EXPECT_EQ(budget.inUse(), 40);
    }
    second.reset();  // joins: the second got its share once the first was returned
    EXPECT_TRUE(secondHolds);
    EXPECT_EQ(budget.inUse(), 0);
}
