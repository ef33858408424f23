// SPDX-License-Identifier: Apache-2.0
// Displays as objects: their parameter, their input, what they accept.
#include "GlFixture.h"

#include <stdexcept>

namespace workbench::test {
namespace {

TEST(Display, Samples_is_declared_with_its_limit) {
    const auto shown = display([](TestDisplay::Renderer&) {});
    ASSERT_EQ(shown->slots().inputs().size(), 1U);
    const auto& input = shown->slots().inputs()[0];
    EXPECT_EQ(input.name, "samples");
    EXPECT_EQ(input.expertLevel, 0);
    EXPECT_EQ(input.parameter->value().text(), "8");
    EXPECT_EQ(input.parameter->property("max")->text(), "16");
    EXPECT_FALSE(input.parameter->property("min"));
    ASSERT_EQ(shown->slots().sinks().size(), 1U);
    EXPECT_EQ(shown->slots().sinks()[0].name, "object");
}

TEST(Display, Samples_are_read_in_a_pool) {
    const auto shown = display([](TestDisplay::Renderer&) {});
    krod::VValuePool pool;
    int samples = 3;
    EXPECT_TRUE(shown->readSamples(pool, samples));
    EXPECT_EQ(samples, 8);
    const auto parameter = shown->slots().input("samples");
    pool.set(*parameter, krod::makeValue(2));
    EXPECT_TRUE(shown->readSamples(pool, samples));
    EXPECT_EQ(samples, 2);
    pool.makeUnreadable(*parameter);
    EXPECT_FALSE(shown->readSamples(pool, samples));
    EXPECT_EQ(samples, 2);
}

TEST(Display, Samples_are_not_readable_where_they_are_not_declared) {
    class WithoutSamples : public krod::MSDeferredObjectDisplay {
    public:
        WithoutSamples() : MSDeferredObjectDisplay("plain", {}) {}
        krod::StrongPtr<MultiSampleDeferredRenderer> createRenderer(krod::VGLRenderContext&) override {
            return {};
        }
        using MSDeferredObjectDisplay::readSamples;
    };
    const krod::StrongPtr<WithoutSamples> shown(new WithoutSamples);
    int samples = 3;
    EXPECT_FALSE(shown->readSamples(krod::VValuePool(), samples));
    EXPECT_EQ(samples, 3);
    EXPECT_TRUE(shown->slots().inputs().empty());
    EXPECT_EQ(shown->slots().sinks().size(), 1U);
}

TEST(Display, Accepts_what_can_be_drawn_and_nothing_else) {
    const auto shown = display([](TestDisplay::Renderer&) {});
    auto shape = object(nothing);
    const krod::StrongPtr<krod::VObject> plain(new krod::VObject("plain"));
    const auto list = shown->accept(krod::WeakPtr<krod::VObject>(shape));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].output, "");
    EXPECT_NE(list[0].typeName.find("TestObject"), std::string::npos) << list[0].typeName;
    EXPECT_TRUE(shown->accept(krod::WeakPtr<krod::VObject>(plain)).empty());
    EXPECT_TRUE(shown->accept({}).empty());
    const krod::WeakPtr<krod::VObject> expired(shape);
    shape.reset();
    EXPECT_TRUE(shown->accept(expired).empty());
}

TEST(Display, Takes_no_input_that_its_own_accept_does_not_list) {
    class Choosy : public TestDisplay {
    public:
        Choosy() : TestDisplay([](Renderer&) {}, 1, "choosy") {}
        [[nodiscard]] krod::AcceptInfoList accept(const krod::WeakPtr<krod::VObject>& object) const override {
            const auto candidate = object.lock();
            if (candidate && candidate->name() == "numbers") return {{"weight", "double", 0}};
            return candidate == wanted ? TestDisplay::accept(object) : krod::AcceptInfoList{};
        }
        krod::StrongPtr<krod::VObject> wanted = object(nothing);
    };
    const krod::StrongPtr<Choosy> shown(new Choosy);
    const auto input = krod::castStrong<krod::VGLRenderObject>(shown->wanted);
    shown->setInput(input);
    const auto refusal = [&](const krod::StrongPtr<krod::VGLRenderObject>& candidate) -> std::string {
        try {
            shown->setInput(candidate);
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(refusal(object(nothing)),
              "choosy: object cannot be its input, since the display does not accept it");
    EXPECT_EQ(refusal(krod::StrongPtr<krod::VGLRenderObject>(new TestObject(nothing, "numbers"))),
              "choosy: numbers cannot be its input, since the display does not accept it")
        << "an output of it is not the object itself";
    EXPECT_EQ(shown->input(), input) << "the old connection stays";
    EXPECT_EQ(refusal(input), "");
    EXPECT_EQ(refusal({}), "") << "disconnecting asks nobody";
}

TEST(Display, Bounds_are_those_of_the_input) {
    const auto shown = display([](TestDisplay::Renderer&) {});
    EXPECT_LT(shown->bounds().radius, 0);
    shown->setInput(object(nothing));
    EXPECT_EQ(shown->bounds().radius, 1);
    shown->setInput({});
    EXPECT_FALSE(shown->input());
}

} // namespace
} // namespace workbench::test
