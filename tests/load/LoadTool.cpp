// SPDX-License-Identifier: Apache-2.0
// Loads a plug-in, makes one object of each module, and ends in one of four ways:
//   load_tool unload PLUGIN   the plug-in is unloaded
//   load_tool exit PLUGIN     the process exits with the plug-in loaded and every object alive
//   load_tool callback PLUGIN the same, but the plug-in is in the midst of making another object
//   load_tool hold PLUGIN     the plug-in's manager is destroyed while somebody holds a processor
// Standard output shows the trace, the deletion of the objects, and what is left.
#include "Scene.h"

#include "host/memory/Typename.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/core/Trace.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

void print(const std::string& key, std::size_t creatorsLeft) {
    std::printf("%s deleted, %zu creators and %zu input creators left\n", key.c_str(), creatorsLeft,
                workbench::InputCreatorRegistry::count());
}

/// Ends the process as soon as it hears of an object.
class Exit : public workbench::ActionListener {
    void created(const krod::StrongPtr<krod::VObject>&, krod::VCreationContext&,
                 krod::VCreatorBase&) override {
        std::puts("-- end");
        std::exit(0);
    }
};

void hold(const std::string& path) {
    scene::Processor processor;
    {
        workbench::PluginManager manager;
        manager.load(path);
        std::puts("-- end");
        processor = scene::processorOf(scene::make("Hollywood/PixelBlur"));
    }
    const krod::ImageTileProcessor& held = *processor;
    std::printf("%s held, library %s\n", krod::typenameOf(typeid(held)).c_str(),
                scene::isInMemory(path) ? "in memory" : "gone");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string_view way = argv[1];
    workbench::setTraceLevel(100);
    workbench::setTraceSink(
        [](int, std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); });
    if (way == "hold") {
        hold(argv[2]);
        return 0;
    }
    // Neither the manager nor the objects are destroyed by main: the process ends with everything alive.
    static auto& manager = *new workbench::PluginManager;
    const workbench::LibraryId library = manager.load(argv[2]);
    static auto& objects = *new std::vector(scene::makeCatalogue());
    scene::watch(objects, print);
    if (way == "callback") {
        static Exit& listener = *new Exit;
        workbench::setActionListener(&listener);
        scene::make("Display/CMYK");
    }
    std::puts("-- end");
    if (way == "unload") manager.unload(library);
    std::exit(0);
}
