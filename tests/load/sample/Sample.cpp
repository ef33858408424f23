// SPDX-License-Identifier: Apache-2.0
// A second plug-in beside the real one: a source of a tile processor, with parameters of types that both
// register.
#include "plugin/Registration.h"
#include "plugin/VSource.h"

#include "host/rendering/ImageTileProcessor.h"

#include <string>

namespace {

using namespace krod;

using Output = StrongPtr<ImageTileProcessor>;

class PassThrough : public VObject, public VSource<Output> {
public:
    class Processor : public ImageTileProcessor {
        void process(const VRenderContext&, ImageTile&) override {}
    };

    PassThrough(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, "ImageProcessor", Output(new Processor));
    }

private:
    TypedSlot<int> count{this, "count", 3, 0};
    TypedSlot<double> weight{this, "weight", 0.5, 0};
};

class Number : public VObject {
public:
    Number(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {}

private:
    TypedSlot<double> value{this, "value", 1.0, 0};
};

KROD_ROW(2)
CreatorRegistration<PassThrough, void> second({.category = "Sample", .name = "PassThrough"}, -1);
KROD_ROW(2)
const SourceRegistration<PassThrough, Output, SlotTypes<int, double>> source(second);
KROD_ROW(1)
CreatorRegistration<Number, void> first({.category = "Sample", .name = "Number"}, 1);
KROD_ROW(1)
const SlotTypes<double> slotTypes;

} // namespace
