// SPDX-License-Identifier: Apache-2.0
#include "host/core/VRequest.h"
#include "host/core/VValuePool.h"
#include "host/memory/MemoryException.h"

#include <gtest/gtest.h>

using namespace krod;

namespace {

StrongPtr<VParameter> parameterOf(double value) {
    return StrongPtr<VParameter>(new VParameter(makeValue(value), "gamma", nullptr));
}

} // namespace

TEST(ValuePool, Value_inOnePool_leavesOtherPoolsAndTheParameter) {
    const auto parameter = parameterOf(1.0);
    parameter->clearState(VParameter::ValueSet);
    VValuePool pool;
    const VValuePool otherPool;
    pool.set(*parameter, makeValue(2.2));

    EXPECT_EQ(parameter->getLocalValue(pool).value->text(), "2.2");
    EXPECT_TRUE(parameter->getLocalValue(pool).set);
    EXPECT_EQ(parameter->getLocalValue(otherPool).value->text(), "1.0");
    EXPECT_FALSE(parameter->getLocalValue(otherPool).set);
    EXPECT_EQ(parameter->value().text(), "1.0");
}

TEST(ValuePool, Parameters_ofOneName_areToldApart) {
    const auto first = parameterOf(1.0);
    const auto second = parameterOf(1.0);
    VValuePool pool;
    pool.set(*first, makeValue(2.2));
    EXPECT_EQ(first->getLocalValue(pool).value->text(), "2.2");
    EXPECT_EQ(second->getLocalValue(pool).value->text(), "1.0");
}

TEST(ValuePool, Unreadable_setAgain_isReadable) {
    const auto parameter = parameterOf(1.0);
    VValuePool pool;
    pool.makeUnreadable(*parameter);
    EXPECT_FALSE(parameter->getLocalValue(pool).value);
    pool.set(*parameter, makeValue(0.5));
    EXPECT_EQ(parameter->getLocalValue(pool).value->text(), "0.5");
}

TEST(ValuePool, NoValue_isRefused) {
    const auto parameter = parameterOf(1.0);
    VValuePool pool;
    EXPECT_THROW(pool.set(*parameter, nullptr), PointerException);
    EXPECT_EQ(parameter->getLocalValue(pool).value->text(), "1.0");
}

TEST(ValuePool, Pool_doesNotOwnParameters) {
    auto parameter = parameterOf(1.0);
    const WeakPtr<VParameter> weak(parameter);
    VValuePool pool;
    pool.set(*parameter, makeValue(2.0));
    parameter.reset();
    EXPECT_TRUE(weak.expired());
}

TEST(Request, Context_isThePool) {
    const VValuePool pool;
    EXPECT_EQ(&VRequest(pool).context(), &pool);
}
