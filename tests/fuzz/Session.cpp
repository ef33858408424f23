// SPDX-License-Identifier: Apache-2.0
// A session with the host: objects of the plug-ins come, are connected, set, shared, saved, loaded, and go. Each
// operation is one byte and as many more as it needs; at the end nothing may be alive.
#include "Target.h"

#include "apps/plime/modules/Catalogue.h"
#include "apps/plime/modules/NetworkModules.h"
#include "apps/plime/modules/Provenance.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/ObjectRegistry.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/memory/LivingObjects.h"
#include "workbench/network/NetworkFile.h"

#include <algorithm>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace workbench;
using krod::StrongPtr;
using krod::VParameter;

constexpr std::size_t MostObjects = 24;
constexpr int MostSteps = 128; // of one session; more of them only take longer

/// Loaded once and never unloaded: a fuzzer knows the addresses of its code.
const Catalogue& catalogue() {
    static const auto* const modules = [] {
        static auto* const manager = new PluginManager;
        manager->load(TOVAR_PLIME);
        manager->load(WORKBENCH_OBJECTS);
        return new Catalogue(Catalogue::registered([](LibraryId library) { return manager->find(library); }));
    }();
    return *modules;
}

/// The bytes that decide what is done; zeros behind the end.
class Script {
public:
    Script(const std::uint8_t* data, std::size_t size) : rest(fuzz::textOf(data, size)) {}

    [[nodiscard]] bool ended() const { return rest.empty(); }
    std::size_t choice(std::size_t count) {
        const unsigned char byte = rest.empty() ? 0 : static_cast<unsigned char>(rest[0]);
        rest.remove_prefix(std::min<std::size_t>(1, rest.size()));
        return byte % count;
    }
    /// Up to the next line end.
    std::string text() {
        const std::string line(rest.substr(0, rest.find('\n')));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        return line;
    }

private:
    std::string_view rest;
};

/// Runs something that may be refused, in one line for people; whether it was done.
template <class Work>
bool succeeds(const Work& work, Fault fault) {
    try {
        work();
        return true;
    } catch (const Failure& failure) {
        fuzz::require(failure.fault() == fault, "the fault is the one that is meant");
        fuzz::require(*failure.what() != '\0', "a failure says something");
        return false;
    }
}

struct Object {
    std::string name;
    std::shared_ptr<ModuleInstance> module;

    [[nodiscard]] krod::MSDeferredObjectDisplay* display() const {
        return dynamic_cast<krod::MSDeferredObjectDisplay*>(&module->object());
    }
};

class Host {
public:
    void perform(Script& script) {
        switch (script.choice(12)) {
        case 0:
            return create(script);
        case 1:
            return connect(script);
        case 2:
            return disconnect(script);
        case 3:
            return set(script);
        case 4:
            return share(script);
        case 5:
            return unshare(script);
        case 6:
            return erase(script);
        case 7:
            return unset(script);
        case 8:
            return takeGlobal(script);
        case 9:
            return compose(script);
        case 10:
            return saveAndLoad(NetworkLayout::Lines);
        default:
            return saveAndLoad(NetworkLayout::OneLine);
        }
    }

    /// The host knows the objects that can be reached and no others, and who shares has one value.
    void check() const {
        std::set<const krod::VObject*> reached;
        for (const Object& object : objects) {
            const krod::VObject* at = &object.module->object();
            while (at && reached.insert(at).second) {
                const auto* const display = dynamic_cast<const krod::MSDeferredObjectDisplay*>(at);
                at = display ? display->input().get() : nullptr;
            }
        }
        fuzz::require(ObjectRegistry::count() == reached.size(), "the registry holds what is alive");
        for (const auto& weak : ObjectRegistry::objects())
            fuzz::require(reached.contains(weak.lock().get()), "the registry holds nothing else");
        for (const std::set<std::string>& group : groups) {
            const VParameter& first = parameter(*group.begin());
            for (const std::string& other : group) {
                fuzz::require(parameter(other).sharesValueWith(first), "who shares has one value");
                fuzz::require(parameter(other).state() == first.state(), "it is set for all or for none");
            }
        }
    }

private:
    [[nodiscard]] const Object& any(Script& script) { return objects[script.choice(objects.size())]; }

    /// "object.parameter", or nothing for an object without parameters.
    std::string anyParameter(Script& script) {
        if (objects.empty()) return {};
        const Object& object = any(script);
        const auto& inputs = std::as_const(object.module->object()).slots().inputs();
        return inputs.empty() ? "" : object.name + '.' + inputs[script.choice(inputs.size())].name;
    }

    [[nodiscard]] const Object& owner(const std::string& end) const {
        return *std::ranges::find(objects, end.substr(0, end.find('.')), &Object::name);
    }
    [[nodiscard]] VParameter& parameter(const std::string& end) const {
        return owner(end).module->parameter(end.substr(end.find('.') + 1));
    }

    void create(Script& script) {
        const auto& entries = catalogue().entries();
        const CatalogueEntry& entry = entries[script.choice(entries.size())];
        if (objects.size() < MostObjects)
            objects.push_back({'n' + std::to_string(++made), std::make_shared<ModuleInstance>(entry)});
    }

    void connect(Script& script) {
        if (objects.empty()) return;
        auto* const display = any(script).display();
        const auto source = krod::castStrong<krod::VGLRenderObject>(any(script).module->reference());
        if (!display || !source) return;
        const StrongPtr<krod::VGLRenderObject> before = display->input();
        bool isCircle = false;
        for (const krod::VGLRenderObject* at = source.get(); at;) {
            isCircle = isCircle || at == display;
            const auto* const next = dynamic_cast<const krod::MSDeferredObjectDisplay*>(at);
            at = next ? next->input().get() : nullptr;
        }
        try {
            display->setInput(source);
            fuzz::require(!isCircle, "a circle is refused");
        } catch (const std::invalid_argument& error) {
            fuzz::require(isCircle, "nothing but a circle is refused");
            fuzz::require(std::string(error.what()).find("→") != std::string::npos, "its path is said");
            fuzz::require(display->input() == before, "the old connection stays");
        }
    }

    void disconnect(Script& script) {
        if (objects.empty()) return;
        if (auto* const display = any(script).display()) display->setInput({});
    }

    void set(Script& script) {
        const std::string end = anyParameter(script);
        if (end.empty()) return;
        const Limits limits = script.choice(2) == 0 ? Limits::Checked : Limits::Unchecked;
        VParameter& changed = parameter(end);
        const auto before = changed.value().age();
        const std::string text = script.text();
        if (!succeeds([&] { owner(end).module->setText(changed.name(), text, limits); }, Fault::Usage))
            fuzz::require(changed.value().age() == before, "what is refused leaves the value");
    }

    void leaveGroup(const std::string& end) {
        for (std::set<std::string>& group : groups) group.erase(end);
        std::erase_if(groups, [](const auto& group) { return group.empty(); });
    }

    void share(Script& script) {
        const std::string a = anyParameter(script), b = anyParameter(script);
        if (a.empty() || b.empty()) return;
        const bool sameType = parameter(a).value().type() == parameter(b).value().type();
        fuzz::require(parameter(a).shareValue(parameter(b)) == sameType, "values of one type are shared");
        if (!sameType || a == b) return;
        leaveGroup(a);
        const auto group = std::ranges::find_if(groups, [&](const auto& each) { return each.contains(b); });
        if (group == groups.end())
            groups.push_back({a, b});
        else
            group->insert(a);
    }

    void unshare(Script& script) {
        const std::string end = anyParameter(script);
        if (end.empty()) return;
        const std::string text = parameter(end).value().text();
        parameter(end).unshareValue();
        leaveGroup(end);
        fuzz::require(parameter(end).value().text() == text, "who leaves keeps the value");
    }

    void erase(Script& script) {
        if (objects.empty()) return;
        const auto gone = objects.begin() + static_cast<std::ptrdiff_t>(script.choice(objects.size()));
        for (const auto& input : std::as_const(gone->module->object()).slots().inputs())
            leaveGroup(gone->name + '.' + input.name);
        objects.erase(gone);
    }

    void unset(Script& script) {
        const std::string end = anyParameter(script);
        if (!end.empty() && !owner(end).module->isUnset(parameter(end).name()))
            owner(end).module->unset(parameter(end).name());
    }

    void takeGlobal(Script& script) {
        const std::string a = anyParameter(script), b = anyParameter(script);
        if (a.empty() || b.empty()) return;
        const bool sameType = parameter(a).value().type() == parameter(b).value().type();
        fuzz::require(parameter(a).setGlobalValue(parameter(b).value()) == sameType, "types decide");
    }

    void compose(Script& script) {
        if (objects.empty()) return;
        const ModuleInstance& module = *any(script).module;
        krod::VValuePool pool;
        module.hideUnset(pool);
        if (auto* const display = dynamic_cast<krod::MSDeferredObjectDisplay*>(&module.object())) {
            succeeds([&] { static_cast<void>(captureShader(*display, pool)); }, Fault::Usage);
            return;
        }
        if (module.object().slots().outputs().empty()) return; // scenes read files
        krod::VRequest request(pool);
        fuzz::require(module.object().update(request, 0), "an update succeeds");
    }

    [[nodiscard]] std::string inputOf(const Object& object) const {
        const auto* const display = object.display();
        const auto found = std::ranges::find_if(objects, [&](const Object& other) {
            return display && display->input() &&
                   &other.module->object() == static_cast<krod::VObject*>(display->input().get());
        });
        return found == objects.end() ? "" : found->name;
    }

    [[nodiscard]] Network network() const {
        Network saved;
        for (const Object& object : objects)
            saved.objects.push_back(describe(object.name, *object.module, inputOf(object)));
        for (const std::set<std::string>& group : groups) {
            if (group.size() < 2) continue;
            NetworkSharing& sharing = saved.shared.emplace_back();
            for (const std::string& end : group)
                sharing.ends.push_back({end.substr(0, end.find('.')), end.substr(end.find('.') + 1)});
        }
        return saved;
    }

    /// What was saved is refused for its texts only, or comes back the same.
    void saveAndLoad(NetworkLayout layout) const {
        std::string text;
        if (!succeeds([&] { text = textOf(network(), layout); }, Fault::Network)) return; // no UTF-8, for instance
        const std::size_t objectsBefore = ObjectRegistry::count(), livingBefore = livingObjectCount();
        succeeds(
            [&] {
                const NetworkModules loaded(catalogue(), networkFromText(text, "net"), "net",
                                            Limits::Unchecked);
                fuzz::require(textOf(loaded.network(), layout) == text, "what was saved comes back the same");
            },
            Fault::Network);
        fuzz::require(ObjectRegistry::count() == objectsBefore, "a loaded network leaves no object");
        fuzz::require(livingObjectCount() == livingBefore, "a loaded network leaves nothing alive");
    }

    std::vector<Object> objects;
    std::vector<std::set<std::string>> groups; ///< of "object.parameter"
    std::size_t made = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_cast<void>(catalogue());
    const std::size_t creators = CreatorRegistry::entries().size(), living = livingObjectCount();
    {
        Host host;
        Script script(data, size);
        for (int step = 0; step < MostSteps && !script.ended(); ++step) {
            host.perform(script);
            host.check();
        }
    }
    fuzz::require(CreatorRegistry::entries().size() == creators, "creators stay");
    fuzz::require(ObjectRegistry::count() == 0, "no object is left");
    fuzz::require(livingObjectCount() == living, "nothing is left alive");
    return 0;
}
