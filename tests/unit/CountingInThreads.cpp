// SPDX-License-Identifier: Apache-2.0
#include "host/memory/WeakPtr.h"
#include "workbench/memory/LivingObjects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

using namespace krod;

namespace {

constexpr int Threads = 4;
constexpr int Rounds = 2000;

class Counted : public ReferenceBase {
public:
    explicit Counted(std::atomic<int>& deaths) : deaths(deaths) {}
    ~Counted() override { ++deaths; }

private:
    std::atomic<int>& deaths;
};

/// Runs the work in several threads that begin together.
template <class Work>
void together(Work work) {
    std::barrier start(Threads);
    std::vector<std::jthread> threads;
    for (int i = 0; i < Threads; ++i)
        threads.emplace_back([&start, &work, i] {
            start.arrive_and_wait();
            work(i);
        });
}

} // namespace

TEST(CountingInThreads, StrongReferences_copiedAndDropped_deleteOnceAtTheEnd) {
    std::atomic<int> deaths = 0;
    StrongPtr<Counted> strong(new Counted(deaths));
    together([&](int) {
        const StrongPtr<Counted> mine = strong;
        for (int round = 0; round < Rounds; ++round) StrongPtr<Counted> copy = mine;
    });
    EXPECT_EQ(strong->referenceCount().strongReferences(), 1);
    EXPECT_EQ(deaths, 0);
    strong.reset();
    EXPECT_EQ(deaths, 1);
}

TEST(CountingInThreads, LastReferences_droppedTogether_deleteOnce) {
    for (int round = 0; round < Rounds / 10; ++round) {
        std::atomic<int> deaths = 0;
        std::vector<StrongPtr<Counted>> held(Threads);
        held[0] = StrongPtr<Counted>(new Counted(deaths));
        for (StrongPtr<Counted>& reference : held) reference = held[0];
        together([&](int i) { held[static_cast<std::size_t>(i)].reset(); });
        ASSERT_EQ(deaths, 1);
    }
}

TEST(CountingInThreads, WeakReferences_lockedWhileLastGoes_holdOrStayEmpty) {
    for (int round = 0; round < Rounds / 10; ++round) {
        std::atomic<int> deaths = 0;
        StrongPtr<Counted> strong(new Counted(deaths));
        const WeakPtr<Counted> weak(strong);
        std::atomic<int> heldDead = 0;
        together([&](int i) {
            if (i == 0) return strong.reset();
            const WeakPtr<Counted> mine = weak;
            if (const StrongPtr<Counted> locked = mine.lock(); locked && deaths != 0) ++heldDead;
        });
        ASSERT_EQ(heldDead, 0);
        ASSERT_EQ(deaths, 1);
    }
}

TEST(CountingInThreads, Census_objectsComeAndGo_returnsToItsNumber) {
    const std::size_t before = workbench::livingObjectCount();
    std::atomic<int> deaths = 0;
    together([&](int) {
        for (int round = 0; round < Rounds; ++round) StrongPtr<Counted> brief(new Counted(deaths));
    });
    EXPECT_EQ(workbench::livingObjectCount(), before);
    EXPECT_EQ(deaths, Threads * Rounds);
}
