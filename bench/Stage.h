// SPDX-License-Identifier: Apache-2.0
// A display with its object, ready to be drawn again and again.
#pragma once

#include "BareFrame.h"
#include "Median.h"
#include "Modules.h"

#include <epoxy/gl.h>

#include <string>
#include <vector>

namespace bench {

/// Owns the objects and what is drawn into. A session is current, and the modules are loaded, as long as it lives.
class Stage {
public:
    /// A display, or, for an empty key, the object alone. The object is a model or point file, {"file", path}, or the
    /// columns of the workbench when the name is empty. Throws as Modules::make.
    Stage(Modules& modules, const std::string& key, const std::vector<Setting>& settings, const Setting& file,
          int width, int height, const std::string& fileKey = "Scene/Model")
        : modules(modules),
          scene(file.name.empty() ? modules.make<krod::VGLRenderObject>("Scene/Columns")
                                  : modules.make<krod::VGLRenderObject>(fileKey, {file})),
          destination(width, height, scene->bounds()),
          context(pool, width, height) {
        if (!key.empty()) add(key, settings);
    }

    /// Puts one more display behind those that are there.
    void add(const std::string& key, const std::vector<Setting>& settings = {}) {
        auto made = modules.make<krod::MSDeferredObjectDisplay>(key, settings);
        made->setInput(display ? krod::StrongPtr<krod::VGLRenderObject>(display) : scene);
        display = made;
    }

    /// One frame, finished.
    void draw() {
        destination.begin();
        if (display)
            display->render(context);
        else
            scene->render(context);
        glFinish();
    }

private:
    Modules& modules;

public:
    krod::StrongPtr<krod::VGLRenderObject> scene;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> display;
    krod::VValuePool pool;
    Destination destination;

private:
    krod::VGLRenderContext context;
};

} // namespace bench
