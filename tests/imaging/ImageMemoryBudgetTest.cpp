#include "imaging/ImageMemoryBudget.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

using namespace wendrel;
using namespace std::chrono_literals;

TEST(ImageMemoryBudget, ASecondLargePictureWaitsForTheFirst)
{
    ImageMemoryBudget budget(64);
    std::atomic_bool secondHolds{false};
    std::optional<std::thread> second;
    {
        const ImageMemoryBudget::Reservation first(budget, 40);
        second.emplace([&] {
            const ImageMemoryBudget::Reservation reservation(budget, 40);
            secondHolds = true;
        });
        std::this_thread::sleep_for(50ms);
        EXPECT_FALSE(secondHolds);
        EXPECT_EQ(budget.inUse(), 40);
    }
    second->join();
    EXPECT_TRUE(secondHolds);
    EXPECT_EQ(budget.inUse(), 0);
}

TEST(ImageMemoryBudget, SmallPicturesShareAndGiantsTakeItAll)
{
    ImageMemoryBudget budget(64);
    {
        const ImageMemoryBudget::Reservation a(budget, 20);
        const ImageMemoryBudget::Reservation b(budget, 30);
        EXPECT_EQ(budget.inUse(), 50);
    }
    {
        const ImageMemoryBudget::Reservation giant(budget, 5'000);
        EXPECT_EQ(budget.inUse(), 64);
    }
    const ImageMemoryBudget::Reservation unreadable(budget, 0);
    EXPECT_EQ(budget.inUse(), 0);
}
