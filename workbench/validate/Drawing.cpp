// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Drawing.h"

#include "workbench/gl/PendingErrors.h"

#include <exception>
#include <stdexcept>
#include <utility>

#include <unistd.h>

namespace workbench::validate {
namespace {

namespace fs = std::filesystem;

/// Whether a value makes a module draw so many things that software takes minutes.
bool isManyThings(const krod::VValueBase& value) {
    const auto* const count = dynamic_cast<const krod::TypedValue<int>*>(&value);
    return count && count->value() > 1000;
}

/// Colours from 0 to 2 and alphas from 0 to 1, the same on every machine.
Pixels evenTile(int width, int height) {
    using half_float::half;
    Pixels pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float across = static_cast<float>(x) / static_cast<float>(width);
            const float down = static_cast<float>(y) / static_cast<float>(height);
            pixels.push_back({half(2 * across), half(2 * down), half(across + down), half(1 - across / 2)});
        }
    return pixels;
}

} // namespace

bool mayRefuse(const krod::VObject& object, const Failure& failure) {
    return waitsForText(object) && (failure.fault() == Fault::Usage || failure.fault() == Fault::Input);
}

bool worksWell(Trial& trial, const std::string& who, const krod::VObject& object,
               const std::function<void()>& work) {
    bool done = false;
    try {
        work();
        done = true;
    } catch (const Failure& failure) {
        if (!mayRefuse(object, failure)) trial.fail(who + ": throws \"" + failure.what() + '"');
    } catch (const std::exception& error) {
        trial.fail(who + ": throws \"" + error.what() + '"');
    }
    for (const unsigned error : takePendingErrors())
        trial.fail(who + ": leaves the OpenGL error " + errorText(error) + " behind");
    return done;
}

void forEachDrawing(const Guest& guest, const std::function<void(const Maker&, krod::VObject&)>& call) {
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        if (draws(*object)) call(maker, *object);
    }
}

Pixels drawOrProcess(RenderSession& session, krod::VObject& object, const krod::VValuePool& pool, int width,
                     int height) {
    if (waitsForText(object)) return {};
    if (draws(object)) return draw(session, object, pool, width, height);
    update(object, pool);
    if (!processorOf(object)) return {};
    return process(object, evenTile(width, height), width, height, pool);
}

krod::VValuePool drawnSetting(const krod::VObject& object, Trial& trial, std::string& text) {
    krod::VValuePool pool;
    for (const auto& input : object.slots().inputs()) {
        const auto values = usualValues(*input.parameter, trial);
        const Value& value = values[trial.draw(values.size())];
        if (isManyThings(*value)) continue;
        pool.set(*input.parameter, value);
        text += (text.empty() ? " with " : ", ") + settingText(*input.parameter, *value);
    }
    return pool;
}

Folder::Folder() {
    std::string name = (fs::temp_directory_path() / "plime-validate-XXXXXX").string();
    if (!::mkdtemp(name.data())) throw std::runtime_error("no folder for temporary files can be made");
    where = name;
}

Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(where, ignored);
}

} // namespace workbench::validate
