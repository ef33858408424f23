// SPDX-License-Identifier: Apache-2.0
#include "workbench/memory/LivingObjects.h"

#include "host/memory/StrongPtr.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace krod;
using workbench::LivingObject;
using workbench::livingObjects;

namespace {

class Plain : public ReferenceBase {};

class Managed : public virtual ReferenceBase {
public:
    long first = 0;
};

class Left : public virtual Managed {};
class Right : public virtual Managed {};
class Diamond : public Left, public Right {};

class Fixed : public ReferenceBase {
public:
    Fixed() { keepInStaticStorage(); }
};

class Failing : public ReferenceBase {
public:
    Failing() { throw 1; }
};

/// What the census says of one object; the type name is empty when it does not know it.
LivingObject entryOf(const ReferenceBase& object) {
    const auto all = livingObjects([](const void*) { return true; });
    const auto found = std::ranges::find(all, &object, &LivingObject::object);
    return found == all.end() ? LivingObject{} : *found;
}

/// The address of the virtual table with which the object begins.
const void* tableOf(const ReferenceBase& object) { return *reinterpret_cast<const void* const*>(&object); }

} // namespace

TEST(LivingObjects, Object_whileItLives_isListedWithClassAndReferences) {
    const std::size_t before = workbench::livingObjectCount();
    StrongPtr<Plain> object(new Plain);
    const StrongPtr<Plain> second = object;
    EXPECT_EQ(workbench::livingObjectCount(), before + 1);
    const LivingObject entry = entryOf(*object);
    EXPECT_EQ(entry.typeName, "Plain");
    EXPECT_EQ(entry.strongReferences, 2);
    EXPECT_FALSE(entry.inStaticStorage);
    delete object.get();
    EXPECT_EQ(workbench::livingObjectCount(), before);
}

TEST(LivingObjects, Object_inStaticStorage_isMarked) {
    const Fixed object;
    EXPECT_TRUE(entryOf(object).inStaticStorage);
    EXPECT_EQ(entryOf(object).strongReferences, 1);
}

TEST(LivingObjects, VirtualTable_ofVirtualBase_isTheMostDerivedClass) {
    const StrongPtr<Diamond> diamond(new Diamond);
    const StrongPtr<Managed> managed(new Managed);
    EXPECT_EQ(entryOf(*diamond).typeName, "Diamond");

    const void* const table = tableOf(*diamond);
    const auto diamonds = livingObjects([table](const void* candidate) { return candidate == table; });
    ASSERT_EQ(diamonds.size(), 1u);
    EXPECT_EQ(diamonds[0].object, static_cast<const ReferenceBase*>(diamond.get()));
}

TEST(LivingObjects, Predicate_asked_mayUseTheCensus) {
    const StrongPtr<Plain> object(new Plain);
    std::size_t asked = 0;
    const auto chosen = livingObjects([&](const void*) {
        const StrongPtr<Plain> another(new Plain);
        ++asked;
        return false;
    });
    EXPECT_EQ(asked, workbench::livingObjectCount());
    EXPECT_TRUE(chosen.empty());
}

TEST(LivingObjects, Constructor_thatThrows_leavesNothingBehind) {
    const std::size_t before = workbench::livingObjectCount();
    EXPECT_THROW(StrongPtr<Failing>(new Failing), int);
    EXPECT_EQ(workbench::livingObjectCount(), before);
}
