// SPDX-License-Identifier: Apache-2.0
#include "host/core/TypedSlotCreator.h"
#include "workbench/core/InputCreatorRegistry.h"

#include "TestModules.h"

#include <gtest/gtest.h>

#include <vector>

using namespace krod;
using workbench::InputCreatorRegistry;
using workbench::LibraryScope;

namespace {

/// A type that the host does not know.
struct Shade {};

class ShadeSlots : public TypedSlotCreator {
public:
    [[nodiscard]] StrongPtr<VParameter> create(const std::string& name) const override {
        return StrongPtr<VParameter>(new VParameter(makeValue(1), name, nullptr));
    }
};

void registerFrom(int library, const std::type_info& type, TypedSlotCreator& creator,
                  const std::string& name) {
    const LibraryScope scope(library);
    TypedSlotCreator::registerTypedSlotCreator(type, creator, name);
}

void withdrawFrom(int library, const std::type_info& type, const std::string& name) {
    const LibraryScope scope(library);
    TypedSlotCreator::unregisterTypedSlotCreator(type, name);
}

class Source : public VInputCreatorBase {
public:
    explicit Source(VCreatorBase& maker) : maker(maker) {}
    [[nodiscard]] VCreatorBase& creator() const noexcept override { return maker; }

private:
    VCreatorBase& maker;
};

class InputCreators : public testing::Test {
protected:
    ~InputCreators() override { InputCreatorRegistry::setPolicy({}); }

    TestCreator<TestModule> creator{"Test/Source"};
    Source first{creator};
    Source second{creator};
};

template <class T>
void expectHostSlots() {
    const TypedSlotCreator* const creator = TypedSlotCreator::find(typeid(T));
    ASSERT_TRUE(creator) << Typename<T>();
    const StrongPtr<VParameter> parameter = creator->create("gamma");
    EXPECT_EQ(parameter->name(), "gamma");
    EXPECT_EQ(parameter->typeName(), Typename<T>());
}

} // namespace

TEST(TypedSlotCreators, SlotTypes_ofTheHost_areKnownWithoutPlugin) {
    expectHostSlots<int>();
    expectHostSlots<double>();
    expectHostSlots<bool>();
    expectHostSlots<std::string>();
    expectHostSlots<FlagList>();
    expectHostSlots<FixedArray<double, 2>>();
    EXPECT_FALSE(TypedSlotCreator::find(typeid(Shade)));
}

TEST(TypedSlotCreators, OneOwner_withdraws_leavesTheOthers) {
    const TypedSlotCreator* const hosts = TypedSlotCreator::find(typeid(int));
    ShadeSlots first;
    ShadeSlots second;
    for (const std::type_info* type : {&typeid(int), &typeid(Shade)}) {
        registerFrom(1, *type, first, typenameOf(*type));
        registerFrom(2, *type, second, typenameOf(*type));
    }
    EXPECT_EQ(TypedSlotCreator::find(typeid(int)), hosts);
    EXPECT_EQ(TypedSlotCreator::find(typeid(Shade)), &first);

    withdrawFrom(1, typeid(int), "int");
    withdrawFrom(1, typeid(Shade), "Shade");
    EXPECT_EQ(TypedSlotCreator::find(typeid(int)), hosts);
    EXPECT_EQ(TypedSlotCreator::find(typeid(Shade)), &second);

    withdrawFrom(3, typeid(Shade), "Shade");
    withdrawFrom(2, typeid(Shade), "Tint");
    EXPECT_EQ(TypedSlotCreator::find(typeid(Shade)), &second);
    withdrawFrom(2, typeid(int), "int");
    withdrawFrom(2, typeid(Shade), "Shade");
    EXPECT_EQ(TypedSlotCreator::find(typeid(int)), hosts);
    EXPECT_FALSE(TypedSlotCreator::find(typeid(Shade)));
}

TEST(TypedSlotCreators, Withdrawal_outsideOfAnyScope_takesTheNewest) {
    ShadeSlots older;
    ShadeSlots newer;
    registerFrom(1, typeid(Shade), older, "Shade");
    registerFrom(2, typeid(Shade), newer, "Shade");
    TypedSlotCreator::unregisterTypedSlotCreator(typeid(Shade), "Shade");
    EXPECT_EQ(TypedSlotCreator::find(typeid(Shade)), &older);
    withdrawFrom(2, typeid(Shade), "Shade");
    EXPECT_EQ(TypedSlotCreator::find(typeid(Shade)), &older);
    TypedSlotCreator::unregisterTypedSlotCreator(typeid(Shade), "Shade");
    EXPECT_FALSE(TypedSlotCreator::find(typeid(Shade)));
}

TEST_F(InputCreators, WithoutPolicy_areAcceptedInOrder) {
    const std::size_t before = InputCreatorRegistry::count();
    EXPECT_TRUE(registerVInput(typeid(Shade), first));
    EXPECT_TRUE(registerVInput(typeid(Shade), second));
    EXPECT_TRUE(registerVInput(typeid(int), first));
    EXPECT_EQ(InputCreatorRegistry::find(typeid(Shade)), (std::vector<VInputCreatorBase*>{&first, &second}));
    EXPECT_EQ(&InputCreatorRegistry::find(typeid(Shade))[0]->creator(), &creator);
    EXPECT_EQ(InputCreatorRegistry::count(), before + 3);

    unregisterVInput(typeid(Shade), first);
    EXPECT_EQ(InputCreatorRegistry::find(typeid(Shade)), std::vector<VInputCreatorBase*>{&second});
    EXPECT_EQ(InputCreatorRegistry::find(typeid(int)), std::vector<VInputCreatorBase*>{&first});
    unregisterVInput(typeid(int), first);
    unregisterVInput(typeid(Shade), second);
    EXPECT_EQ(InputCreatorRegistry::count(), before);
}

TEST_F(InputCreators, Policy_refuses_withTheTypesName) {
    std::string asked;
    InputCreatorRegistry::setPolicy([&](const VInputCreatorBase& candidate, const std::string& typeName) {
        asked += typeName + ' ';
        return &candidate != &first && InputCreatorRegistry::find(typeid(Shade)).empty();
    });
    EXPECT_FALSE(registerVInput(typeid(Shade), first));
    EXPECT_TRUE(registerVInput(typeid(Shade), second));
    EXPECT_EQ(asked, "Shade Shade ");
    EXPECT_EQ(InputCreatorRegistry::find(typeid(Shade)), std::vector<VInputCreatorBase*>{&second});
    unregisterVInput(typeid(Shade), first);
    EXPECT_EQ(InputCreatorRegistry::find(typeid(Shade)).size(), 1u);
    unregisterVInput(typeid(Shade), second);
}
