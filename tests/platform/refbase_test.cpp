// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <utils/RefBase.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

namespace {

using android::RefBase;
using android::sp;
using android::wp;

struct Diary {
    std::atomic<int> firsts{0};
    std::atomic<int> lasts{0};
    std::atomic<int> destroyed{0};
};

class Base : public virtual RefBase {
public:
    int mark = 7;
};

class Counted : public Base {
public:
    explicit Counted(Diary& diary, int32_t lifetime = OBJECT_LIFETIME_STRONG) : mDiary(diary) {
        extendObjectLifetime(lifetime);
    }
    ~Counted() override { ++mDiary.destroyed; }
    static constexpr int32_t kWeak = OBJECT_LIFETIME_WEAK;

protected:
    void onFirstRef() override { ++mDiary.firsts; }
    void onLastStrongRef(const void* /*id*/) override { ++mDiary.lasts; }

private:
    Diary& mDiary;
};

TEST(AnObject, LivesFromItsFirstStrongReferenceToItsLast) {
    Diary diary;
    sp<Counted> one = new Counted(diary);
    sp<Counted> two = one;
    EXPECT_EQ(2, one->getStrongCount());
    EXPECT_EQ(1, diary.firsts);
    one.clear();
    EXPECT_EQ(0, diary.destroyed);
    two = nullptr;
    EXPECT_EQ(1, diary.lasts);
    EXPECT_EQ(1, diary.destroyed);
}

TEST(AMovedStrongPointer, IsEmptyAndCountsNothing) {
    Diary diary;
    sp<Counted> one = new Counted(diary);
    sp<RefBase> base = std::move(one);
    EXPECT_TRUE(one == nullptr);  // NOLINT(bugprone-use-after-move): what a moved pointer holds
    EXPECT_EQ(1, base->getStrongCount());
}

TEST(AStrongPointer, MayBeAssignedToItself) {
    Diary diary;
    sp<Counted> one = new Counted(diary);
    sp<Counted>& same = one;
    one = same;
    one = std::move(same);
    EXPECT_EQ(0, diary.destroyed);
    EXPECT_EQ(1, one->getStrongCount());
}

TEST(AWeakPointer, PromotesOnlyWhileTheObjectLives) {
    Diary diary;
    sp<Counted> strong = new Counted(diary);
    const wp<Counted> weak = strong;
    EXPECT_TRUE(weak.promote() == strong);
    strong.clear();
    EXPECT_EQ(1, diary.destroyed);
    EXPECT_TRUE(weak.promote() == nullptr);
}

TEST(AWeakPointer, PromotesAnObjectThatWasNeverHeld) {
    Diary diary;
    const wp<Counted> weak = new Counted(diary);
    sp<Counted> strong = weak.promote();
    ASSERT_TRUE(strong != nullptr);
    EXPECT_EQ(1, diary.firsts);
    strong.clear();
    EXPECT_EQ(1, diary.destroyed);
}

TEST(AWeakPointer, FollowsAnObjectToItsVirtualBase) {
    Diary diary;
    sp<Counted> strong = new Counted(diary);
    const wp<Counted> weak = strong;
    const wp<RefBase> root = weak;
    const wp<Base> base = weak;
    EXPECT_EQ(7, base.promote()->mark);
    EXPECT_TRUE(root.promote() == strong);
    EXPECT_TRUE(root == weak);
    strong.clear();
    const wp<RefBase> late = weak;
    EXPECT_TRUE(late.promote() == nullptr);
    EXPECT_TRUE(late == nullptr);
}

TEST(AWeakPointer, TellsAnObjectFromALaterOneAtTheSameAddress) {
    Diary diary;
    sp<Counted> strong = new Counted(diary);
    const wp<Counted> first = strong;
    strong = new Counted(diary);
    const wp<Counted> second = strong;
    EXPECT_TRUE(first != second);
}

TEST(AnObjectOfWeakLifetime, OutlivesItsStrongReferences) {
    Diary diary;
    sp<Counted> strong = new Counted(diary, Counted::kWeak);
    wp<Counted> weak = strong;
    strong.clear();
    EXPECT_EQ(0, diary.destroyed);
    EXPECT_EQ(1, diary.lasts);
    strong = weak.promote();
    ASSERT_TRUE(strong != nullptr);
    strong.clear();
    weak.clear();
    EXPECT_EQ(1, diary.destroyed);
}

TEST(AnObjectThatWasNeverHeld, MayBeDestroyedDirectly) {
    Diary diary;
    wp<Counted> weak;
    {
        Counted direct(diary);
        weak = &direct;
    }
    EXPECT_EQ(1, diary.destroyed);
    EXPECT_EQ(0, diary.firsts);
    EXPECT_TRUE(weak.promote() == nullptr);
}

class Neighbour : public RefBase {
public:
    explicit Neighbour(bool& seen) : mSeen(seen) {}
    ~Neighbour() override {
        const wp<Neighbour> self(this);
        mSeen = self.promote() == nullptr;
    }

private:
    bool& mSeen;
};

TEST(AnObjectBeingDestroyed, CanStillBeNamedWeaklyButNotHeld) {
    bool gone = false;
    { const sp<Neighbour> only = new Neighbour(gone); }
    EXPECT_TRUE(gone);
}

TEST(PromotionUnderThreads, NeverRevivesAndNeverLosesAnObject) {
    constexpr int kRounds = 300;
    Diary diary;
    for (int round = 0; round < kRounds; ++round) {
        sp<Counted> strong = new Counted(diary);
        const wp<Counted> weak = strong;
        std::vector<std::thread> threads;
        std::atomic<bool> go{false};
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([&weak, &go] {
                while (!go) {
                }
                // A bound, because the two may keep the object alive for each other without end.
                for (int promotions = 0; promotions < 1000; ++promotions) {
                    const sp<Counted> held = weak.promote();
                    if (held == nullptr) {
                        return;
                    }
                    EXPECT_EQ(7, held->mark);
                }
            });
        }
        go = true;
        strong.clear();
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(round + 1, diary.destroyed);
    }
    EXPECT_EQ(kRounds, diary.firsts);
    EXPECT_EQ(kRounds, diary.lasts);
}

}  // namespace
