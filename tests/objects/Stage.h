// SPDX-License-Identifier: Apache-2.0
// What the tests of the workbench's own modules share: the plug-in, a context, a folder for files.
#pragma once

#include "host/gl/MSDeferredObjectDisplay.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/PluginManager.h"
#include "workbench/gl/SceneRenderer.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench::test {

using Object = krod::StrongPtr<krod::VGLRenderObject>;
using Pixels = std::vector<krod::RGBAHalf>;

/// Hears all warnings as long as it lives.
class Warnings : public ActionListener {
public:
    Warnings() : before(setActionListener(this)) {}
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;
    ~Warnings() override { setActionListener(before); }

    void warning(const std::string& text) override { heard.push_back(text); }

    std::vector<std::string> heard;

private:
    ActionListener* before;
};

/// The plug-in, loaded, with a session on a software driver and an empty folder, removed afterwards.
class Stage {
public:
    static constexpr int Width = 320, Height = 180;

    Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();

    /// A new object of that key.
    [[nodiscard]] static Object make(std::string_view key);
    /// Sets a parameter; throws when the object does not have it or the text is not accepted.
    static void set(const Object& object, const std::string& parameter, const std::string& text);
    /// Writes a file into the folder.
    [[nodiscard]] std::string write(const std::string& name, std::string_view bytes) const;
    /// A picture of Width times Height pixels on black, camera fitted to the object's bounds.
    [[nodiscard]] Pixels render(krod::VGLRenderObject& object);

    Warnings warnings;
    PluginManager plugins;
    LibraryId library;
    RenderSession session;
    krod::VValuePool pool;
    std::filesystem::path folder;
};

/// The pixel in column x and row y from the top left corner.
[[nodiscard]] const krod::RGBAHalf& at(const Pixels& pixels, int x, int y);
/// The largest value of red, green and blue.
[[nodiscard]] float largest(const Pixels& pixels);
/// The share of pixels that are not black.
[[nodiscard]] double coverage(const Pixels& pixels);
/// Bit for bit.
[[nodiscard]] bool same(const Pixels& a, const Pixels& b);
/// What a function throws, which has to be a Failure of the input kind.
[[nodiscard]] Diagnostic inputFailure(const std::function<void()>& function);

} // namespace workbench::test
