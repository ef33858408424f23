// SPDX-License-Identifier: Apache-2.0
#include "host/memory/StrongPtr.h"
#include "host/memory/WeakPtr.h"

#include <gtest/gtest.h>

using namespace krod;

namespace {

struct Story {
    int unreferenced = 0;
    int deleted = 0;
};

class Thing : public ReferenceBase {
public:
    explicit Thing(Story& story) : story(story) {}
    ~Thing() override { ++story.deleted; }
    void onUnreferenced() noexcept override { ++story.unreferenced; }

private:
    Story& story;
};

class SpecialThing : public Thing {
public:
    using Thing::Thing;
};

/// Takes and drops references to itself while it is deleted.
class Nesting : public Thing {
public:
    using Thing::Thing;
    ~Nesting() override {
        for (int i = 0; i < 3; ++i) StrongPtr<Nesting> again(this);
        weakCouldLock = static_cast<bool>(WeakPtr<Nesting>(this).lock());
    }
    void onUnreferenced() noexcept override {
        Thing::onUnreferenced();
        StrongPtr<Nesting> again(this);
    }
    static inline bool weakCouldLock = false;
};

/// Leaves a strong reference to itself behind when it is deleted.
class Lingering : public Thing {
public:
    Lingering(Story& story, StrongPtr<Lingering>& heir) : Thing(story), heir(heir) {}
    ~Lingering() override { heir = StrongPtr<Lingering>(this); }

private:
    StrongPtr<Lingering>& heir;
};

class StaticThing : public Thing {
public:
    explicit StaticThing(Story& story) : Thing(story) { keepInStaticStorage(); }
};

} // namespace

TEST(Counting, StrongReferences_lastOneGoes_deletesObjectOnce) {
    Story story;
    {
        StrongPtr<Thing> first(new Thing(story));
        StrongPtr<Thing> second = first;
        EXPECT_EQ(first->referenceCount().strongReferences(), 2);
        first.reset();
        EXPECT_EQ(story.deleted, 0);
        EXPECT_EQ(second->referenceCount().strongReferences(), 1);
    }
    EXPECT_EQ(story.unreferenced, 1);
    EXPECT_EQ(story.deleted, 1);
}

TEST(Counting, StrongReference_movedAndSwapped_countStays) {
    Story story;
    StrongPtr<Thing> first(new Thing(story));
    StrongPtr<Thing> second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(second->referenceCount().strongReferences(), 1);
    first.swap(second);
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    const StrongPtr<Thing>& same = first;
    first = same;
    EXPECT_EQ(first->referenceCount().strongReferences(), 1);
}

TEST(Counting, StrongReference_castToDerived_sharesOrIsEmpty) {
    Story story;
    const StrongPtr<Thing> special = StrongPtr<SpecialThing>(new SpecialThing(story));
    const StrongPtr<Thing> plain(new Thing(story));
    EXPECT_EQ(castStrong<SpecialThing>(special).get(), special.get());
    EXPECT_FALSE(castStrong<SpecialThing>(plain));
    EXPECT_FALSE(castStrong<SpecialThing>(StrongPtr<Thing>()));
}

TEST(Counting, WeakReference_objectDeleted_expires) {
    Story story;
    StrongPtr<Thing> strong(new Thing(story));
    const WeakPtr<Thing> weak(strong);
    EXPECT_FALSE(weak.expired());
    EXPECT_EQ(weak.lock(), strong);
    strong.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(weak.lock());
    EXPECT_TRUE(WeakPtr<Thing>().expired());
}

TEST(Counting, WeakReference_objectNeverHeld_locksNothing) {
    Story story;
    Thing* const unheld = new Thing(story);
    const WeakPtr<Thing> weak(unheld);
    EXPECT_FALSE(weak.expired());
    EXPECT_FALSE(weak.lock());
    delete unheld;
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(story.deleted, 1);
    EXPECT_EQ(story.unreferenced, 0);
}

TEST(Counting, WeakReferences_sameObject_stayEqualAfterItsEnd) {
    Story story;
    StrongPtr<Thing> strong(new Thing(story));
    const WeakPtr<Thing> first(strong);
    const WeakPtr<Thing> second(first);
    strong.reset();
    EXPECT_EQ(first, second);
    EXPECT_FALSE(first == WeakPtr<Thing>());
}

TEST(Counting, Object_deletedUnderStrongReferences_leavesThemEmpty) {
    Story story;
    StrongPtr<Thing> first(new Thing(story));
    StrongPtr<Thing> second = first;
    const WeakPtr<Thing> weak(first);
    delete first.get();
    EXPECT_EQ(story.deleted, 1);
    EXPECT_FALSE(first);
    EXPECT_EQ(second.get(), nullptr);
    EXPECT_FALSE(weak.lock());
    const StrongPtr<Thing> copyOfEmpty = second;
    first.reset();
    second.reset();
    EXPECT_FALSE(copyOfEmpty);
    EXPECT_EQ(story.deleted, 1);
    EXPECT_EQ(story.unreferenced, 0);
}

TEST(Counting, Destructor_takesReferencesToItself_deletesOnce) {
    Story story;
    Nesting::weakCouldLock = true;
    StrongPtr<Nesting> strong(new Nesting(story));
    strong.reset();
    EXPECT_EQ(story.deleted, 1);
    EXPECT_EQ(story.unreferenced, 1);
    EXPECT_FALSE(Nesting::weakCouldLock);
}

TEST(Counting, Destructor_leavesReferenceBehind_readsEmptyAndIsHarmless) {
    Story story;
    StrongPtr<Lingering> heir;
    StrongPtr<Lingering>(new Lingering(story, heir)).reset();
    EXPECT_EQ(story.deleted, 1);
    EXPECT_FALSE(heir);
    StrongPtr<Lingering> copy = heir;
    heir.reset();
    copy.reset();
    EXPECT_EQ(story.deleted, 1);
}

TEST(Counting, StaticObject_allReferencesGone_lives) {
    Story story;
    WeakPtr<Thing> weak;
    StrongPtr<Thing> late;
    {
        StaticThing thing(story);
        EXPECT_EQ(thing.referenceCount().strongReferences(), 1);
        weak = WeakPtr<Thing>(&thing);
        StrongPtr<Thing>(&thing).reset();
        EXPECT_EQ(story.deleted, 0);
        EXPECT_EQ(weak.lock().get(), &thing);
        late = weak.lock();
        EXPECT_EQ(thing.referenceCount().strongReferences(), 2);
    }
    EXPECT_EQ(story.deleted, 1);
    EXPECT_EQ(story.unreferenced, 0);
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(weak.lock());
    EXPECT_FALSE(late);
}
