// SPDX-License-Identifier: Apache-2.0
#include "host/core/VSlotContainer.h"
#include "host/rendering/ImageTileProcessor.h"
#include "host/rendering/VRenderObject.h"

#include <gtest/gtest.h>

using namespace krod;

namespace {

class NoProcess : public ImageTileProcessor {
public:
    void process(const VRenderContext& /*context*/, ImageTile& /*tile*/) override {}
};

class Nothing : public VRenderObject {
public:
    using VRenderObject::VRenderObject;
    void render(VRenderContext& /*context*/) override {}
    [[nodiscard]] BoundingSphere bounds() const override { return {}; }
};

using Processor = StrongPtr<ImageTileProcessor>;

} // namespace

TEST(ImageTile, Tile_withAndWithoutStore_keepsWhatItWasMadeOf) {
    const StrongPtr<Chunk<RGBAHalf>> pixels(new Chunk<RGBAHalf>(6));
    EXPECT_EQ(pixels->bytes(), 48u);
    const ImageTile tile(3, 2, pixels);
    EXPECT_EQ(tile.width(), 3);
    EXPECT_EQ(tile.height(), 2);
    EXPECT_EQ(castStrong<Chunk<RGBAHalf>>(tile.store()), pixels);
    EXPECT_FALSE(ImageTile(3, 2, nullptr).store());
}

TEST(ProcessorValue, Creator_isKnownWithoutPluginAndMakesAnEmptyValue) {
    const VValueCreator* const creator = VValueCreator::find("StrongPtr<ImageTileProcessor>");
    ASSERT_TRUE(creator);
    const auto value = castStrong<TypedValue<Processor>>(creator->create());
    ASSERT_TRUE(value);
    EXPECT_FALSE(value->value());
}

TEST(ProcessorValue, Text_isEmptyAndNoneIsTaken) {
    const Processor processor = StrongPtr<NoProcess>(new NoProcess);
    const auto value = makeValue(processor);
    EXPECT_EQ(value->text(), "");
    EXPECT_FALSE(value->setFromText(""));
    EXPECT_FALSE(value->setFromText("blur"));
    EXPECT_EQ(value->value(), processor);
}

TEST(ProcessorValue, Outputs_cleared_letGoOfTheProcessor) {
    Processor processor = StrongPtr<NoProcess>(new NoProcess);
    const WeakPtr<ImageTileProcessor> weak(processor);
    VSlotContainer slots;
    slots.addOutput(StrongPtr<VParameter>(new VParameter(makeValue(processor), "processor", nullptr)));
    processor.reset();
    EXPECT_FALSE(weak.expired());
    EXPECT_EQ(slots.getAcceptInfoList(typeid(Processor)).size(), 1u);
    slots.clearOutputs();
    EXPECT_TRUE(weak.expired());
}

TEST(RenderObject, Object_isModuleAndDrawable) {
    const StrongPtr<VObject> object(new Nothing("nothing"));
    EXPECT_EQ(object->name(), "nothing");
    auto* const drawable = dynamic_cast<RenderAble*>(object.get());
    ASSERT_TRUE(drawable);
    EXPECT_LT(drawable->bounds().radius, 0);
}

TEST(RenderContext, ValuePool_isTheOneGiven) {
    const VValuePool pool;
    EXPECT_EQ(&VRenderContext(pool).valuePool(), &pool);
}
