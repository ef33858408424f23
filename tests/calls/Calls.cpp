// SPDX-License-Identifier: Apache-2.0
#include "Calls.h"

#include "host/core/TypedSlotCreator.h"
#include "host/core/VCreatorBase.h"
#include "host/core/VInputRegistry.h"
#include "host/core/VObject.h"
#include "host/memory/MemoryException.h"
#include "host/values/VValueCreator.h"
#include "workbench/core/Trace.h"

#include <dlfcn.h>

#include <cstdio>
#include <map>
#include <stdexcept>
#include <utility>

/// A function under the linker name of one of the host's, in front of it.
#define IN_FRONT_OF(name) asm(name) __attribute__((visibility("default")))

namespace calls {
namespace {

using namespace krod;

struct State {
    bool recording = false;
    std::vector<std::string> lines;
    std::map<const void*, std::string> creators; ///< of values and slots, by address
    Changes changes;
};

State& state() {
    static State& only = *new State; // libraries call until the process ends
    return only;
}

void note(std::string line) noexcept {
    if (state().recording) state().lines.push_back(std::move(line));
}

/// The same, for calls that may fail.
void call(std::string line) {
    if (state().recording && state().changes.failing > 0 && --state().changes.failing == 0)
        throw MemoryException();
    note(std::move(line));
}

/// Ends the record while the host calls its own functions, as the name form of creators does with the other.
class Pause {
public:
    Pause() : before(std::exchange(state().recording, false)) {}
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause() { state().recording = before; }

private:
    bool before;
};

/// The host's own function of that linker name.
template <class Function>
Function* hosts(const char* name) {
    auto* const found = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
    if (!found) throw std::logic_error(std::string("the host has no ") + name);
    return found;
}

std::string number(int value) { return VValueTrait<int>::Text(value); }
std::string inputOrOutput(bool input) { return input ? "input" : "output"; }
std::string word(bool value) { return value ? "true" : "false"; }
std::string told(const StrongPtr<VCreationPreferences>& preferences) {
    if (!preferences) return "no preferences";
    return preferences == state().changes.preferences ? "the creator's preferences" : "other preferences";
}

} // namespace

Record::Record() {
    workbench::setTraceLevel(100);
    workbench::setTraceSink([](int level, std::string_view line) {
        note("trace at " + number(level) + ": " + std::string(line.substr(0, line.find('\n'))));
    });
    state().lines.clear();
    state().recording = true;
}

Record::~Record() {
    state().recording = false;
    workbench::setTraceSink({});
    workbench::setTraceLevel(0);
}

std::vector<std::string> Record::take() { return std::exchange(state().lines, {}); }

std::string Record::text() {
    std::string all;
    for (const std::string& line : take()) all += line + '\n';
    return all;
}

Changes& changes() { return state().changes; }

// ---- registration ----

#define ASSIGN "_ZNK4krod20VCreatorPropertyBase6assignERNS_18VCreatorPropertiesE"
void assign(const VCreatorPropertyBase* self, VCreatorProperties& record) IN_FRONT_OF(ASSIGN);
void assign(const VCreatorPropertyBase* self, VCreatorProperties& record) {
    const VCreatorProperties before = record;
    hosts<decltype(assign)>(ASSIGN)(self, record);
    const std::pair<const char*, std::optional<std::string> VCreatorProperties::*> fields[] = {
        {"category", &VCreatorProperties::category}, {"name", &VCreatorProperties::name},
        {"help", &VCreatorProperties::help},         {"description", &VCreatorProperties::description},
        {"group", &VCreatorProperties::group},       {"source", &VCreatorProperties::source}};
    std::string line = "assign";
    for (const auto& [name, field] : fields)
        if (record.*field != before.*field)
            line += std::string(" ") + name + ": " + (record.*field).value_or("nothing");
    call(line);
}

#define KEYNAME                                                                                              \
    "_ZN4krod20VCreatorPropertyBase7keynameERKNS_18VCreatorPropertiesERKNSt7__cxx1112basic_"                 \
    "stringIcSt11char_"                                                                                      \
    "traitsIcESaIcEEE"
std::string keyname(const VCreatorProperties& properties, const std::string& separator) IN_FRONT_OF(KEYNAME);
std::string keyname(const VCreatorProperties& properties, const std::string& separator) {
    call("keyname with " + separator);
    return hosts<decltype(keyname)>(KEYNAME)(properties, separator);
}

#define CREATOR_OF_TEXTS                                                                                     \
    "_ZN4krod12VCreatorBaseC2ERKNS_18VCreatorPropertiesEiRKNS_9StrongPtrINS_20VCreationPreferencesEEEbPKc"
#define CREATOR_OF_NAME                                                                                      \
    "_ZN4krod12VCreatorBaseC2ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEiRKNS_9StrongPtrINS_"    \
    "20VCreation"                                                                                            \
    "PreferencesEEEbPKc"
using Preferences = const StrongPtr<VCreationPreferences>&;

Preferences given(Preferences own) { return changes().preferences ? changes().preferences : own; }

std::string rest(int order, Preferences preferences, bool hidden, const char* key) {
    return number(order) + ", " + told(preferences) + ", " + word(hidden) + ", " + key + ')';
}

void creatorOfTexts(void* self, void* table, const VCreatorProperties& texts, int order,
                    Preferences preferences, bool hidden, const char* key) IN_FRONT_OF(CREATOR_OF_TEXTS);
void creatorOfTexts(void* self, void* table, const VCreatorProperties& texts, int order,
                    Preferences preferences, bool hidden, const char* key) {
    call("VCreatorBase(the record, " + rest(order, preferences, hidden, key));
    hosts<decltype(creatorOfTexts)>(CREATOR_OF_TEXTS)(self, table, texts, order, given(preferences), hidden,
                                                      key);
}

void creatorOfName(void* self, void* table, const std::string& name, int order, Preferences preferences,
                   bool hidden, const char* key) IN_FRONT_OF(CREATOR_OF_NAME);
void creatorOfName(void* self, void* table, const std::string& name, int order, Preferences preferences,
                   bool hidden, const char* key) {
    call("VCreatorBase(" + name + ", " + rest(order, preferences, hidden, key));
    const Pause pause;
    hosts<decltype(creatorOfName)>(CREATOR_OF_NAME)(self, table, name, order, given(preferences), hidden,
                                                    key);
}

extern "C" {

[[gnu::visibility("default")]] int fflush(std::FILE* stream) {
    note(stream == stdout ? "fflush(stdout)" : "fflush of another stream");
    return hosts<int(std::FILE*)>("fflush")(stream);
}

[[gnu::visibility("default")]] int __cxa_atexit(void (*function)(void*), void* argument, void* library) {
    note("destruction at unload registered");
    return hosts<int(void (*)(void*), void*, void*)>("__cxa_atexit")(function, argument, library);
}
}

#define REGISTER_INPUT "_ZN4krod14registerVInputERKSt9type_infoRNS_17VInputCreatorBaseE"
bool registerInput(const std::type_info& type, VInputCreatorBase& creator) IN_FRONT_OF(REGISTER_INPUT);
bool registerInput(const std::type_info& type, VInputCreatorBase& creator) {
    call("registerVInput(" + typenameOf(type) + ", creator of " + creator.creator().name() + ')');
    return hosts<decltype(registerInput)>(REGISTER_INPUT)(type, creator);
}

#define UNREGISTER_INPUT "_ZN4krod16unregisterVInputERKSt9type_infoRNS_17VInputCreatorBaseE"
void unregisterInput(const std::type_info& type, VInputCreatorBase& creator) IN_FRONT_OF(UNREGISTER_INPUT);
void unregisterInput(const std::type_info& type, VInputCreatorBase& creator) {
    note("unregisterVInput(" + typenameOf(type) + ", creator of " + creator.creator().name() + ')');
    hosts<decltype(unregisterInput)>(UNREGISTER_INPUT)(type, creator);
}

#define DELETE_INSTANCES "_ZN4krod12VCreatorBase18deleteAllInstancesERKSt9type_info"
void deleteInstances(VCreatorBase* self, const std::type_info& type) IN_FRONT_OF(DELETE_INSTANCES);
void deleteInstances(VCreatorBase* self, const std::type_info& type) {
    note("deleteAllInstances of " + self->name() + ", " + typenameOf(type));
    hosts<decltype(deleteInstances)>(DELETE_INSTANCES)(self, type);
}

#define REGISTER_VALUE                                                                                       \
    "_ZN4krod13VValueCreator15registerCreatorERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERS0_"
void registerValue(const std::string& type, VValueCreator& creator) IN_FRONT_OF(REGISTER_VALUE);
void registerValue(const std::string& type, VValueCreator& creator) {
    call("value creator of " + type + " registered");
    state().creators[&creator] = "value creator of " + type;
    hosts<decltype(registerValue)>(REGISTER_VALUE)(type, creator);
}

#define REGISTER_SLOT                                                                                        \
    "_ZN4krod16TypedSlotCreator24registerTypedSlotCreatorERKSt9type_infoRS0_RKNSt7__cxx1112basic_"           \
    "stringIcSt11char_"                                                                                      \
    "traitsIcESaIcEEE"
void registerSlot(const std::type_info& type, TypedSlotCreator& creator, const std::string& name)
    IN_FRONT_OF(REGISTER_SLOT);
void registerSlot(const std::type_info& type, TypedSlotCreator& creator, const std::string& name) {
    call("slot creator of " + typenameOf(type) + " registered as " + name);
    state().creators[&creator] = "slot creator of " + name;
    hosts<decltype(registerSlot)>(REGISTER_SLOT)(type, creator, name);
}

#define UNREGISTER_SLOT                                                                                      \
    "_ZN4krod16TypedSlotCreator26unregisterTypedSlotCreatorERKSt9type_infoRKNSt7__cxx1112basic_"             \
    "stringIcSt11char_"                                                                                      \
    "traitsIcESaIcEEE"
void unregisterSlot(const std::type_info& type, const std::string& name) IN_FRONT_OF(UNREGISTER_SLOT);
void unregisterSlot(const std::type_info& type, const std::string& name) {
    note("slot creator of " + typenameOf(type) + " withdrawn as " + name);
    hosts<decltype(unregisterSlot)>(UNREGISTER_SLOT)(type, name);
}

#define FREE "_ZN4krod13HostAllocateddlEPv"
void release(void* memory) IN_FRONT_OF(FREE);
void release(void* memory) {
    if (const auto found = state().creators.find(memory); found != state().creators.end()) {
        note(found->second + " freed");
        state().creators.erase(found);
    }
    hosts<decltype(release)>(FREE)(memory);
}

// ---- creation ----

#define RENDER_OBJECT                                                                                        \
    "_ZN4krod15VGLRenderObjectC2ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEiRKNS_9StrongPtrINS_" \
    "20"                                                                                                     \
    "VCreationPreferencesEEE"
void renderObject(void* self, void* table, const std::string& name, int flags, Preferences preferences)
    IN_FRONT_OF(RENDER_OBJECT);
void renderObject(void* self, void* table, const std::string& name, int flags, Preferences preferences) {
    call("VGLRenderObject(" + name + ", " + number(flags) + ", " + told(preferences) + ')');
    hosts<decltype(renderObject)>(RENDER_OBJECT)(self, table, name, flags, preferences);
}

#define SET_CREATOR "_ZN4krod7VObject10setCreatorERKNS_7WeakPtrINS_12VCreatorBaseEEE"
void setCreator(VObject* self, const WeakPtr<VCreatorBase>& creator) IN_FRONT_OF(SET_CREATOR);
void setCreator(VObject* self, const WeakPtr<VCreatorBase>& creator) {
    note("VObject::setCreator(" + creator.lock()->name() + ')');
    hosts<decltype(setCreator)>(SET_CREATOR)(self, creator);
}

#define ENABLE "_ZN4krod7VObject23enableRequestProcessingEv"
void enableRequests(VObject* self) IN_FRONT_OF(ENABLE);
void enableRequests(VObject* self) {
    note("VObject::enableRequestProcessing()");
    hosts<decltype(enableRequests)>(ENABLE)(self);
}

#define CREATED                                                                                              \
    "_ZN4krod15VActionNotifier15VObjectCreationERKNS_9StrongPtrINS_7VObjectEEERNS_16VCreationContextERNS_"   \
    "12VCreator"                                                                                             \
    "BaseE"
void created(const StrongPtr<VObject>& object, VCreationContext& context, VCreatorBase& creator)
    IN_FRONT_OF(CREATED);
void created(const StrongPtr<VObject>& object, VCreationContext& context, VCreatorBase& creator) {
    call("VObjectCreation(" + object->name() + ", creator of " + creator.name() + ')');
    hosts<decltype(created)>(CREATED)(object, context, creator);
}

// ---- parameters ----

#define PARAMETER                                                                                            \
    "_ZN4krod10VParameterC1ENS_9StrongPtrINS_10VValueBaseEEENSt7__cxx1112basic_stringIcSt11char_"            \
    "traitsIcESaIcEEENS1_"                                                                                   \
    "INS_20VCreationPreferencesEEE"
void parameter(void* self, StrongPtr<VValueBase>& value, std::string& name,
               StrongPtr<VCreationPreferences>& preferences) IN_FRONT_OF(PARAMETER); // by invisible reference
void parameter(void* self, StrongPtr<VValueBase>& value, std::string& name,
               StrongPtr<VCreationPreferences>& preferences) {
    call("VParameter(" + value->typeName() + ", " + name + ", " + told(preferences) + ')');
    hosts<decltype(parameter)>(PARAMETER)(self, value, name, preferences);
}

#define OWNER "_ZN4krod10VParameter10setCreatorEPNS_7VObjectE"
void owner(VParameter* self, VObject* object) IN_FRONT_OF(OWNER);
void owner(VParameter* self, VObject* object) {
    note(self->name() + ".setCreator(" + object->name() + ')');
    hosts<decltype(owner)>(OWNER)(self, object);
}

#define ADD_PARAMETER                                                                                        \
    "_ZN4krod12VSlotGlobals12addParameterEPNS_7VObjectERKNSt7__cxx1112basic_stringIcSt11char_"               \
    "traitsIcESaIcEEEiRKNS_9"                                                                                \
    "StrongPtrINS_10VParameterEEERKSt9type_infob"
StrongPtr<VParameter> addParameter(VObject* that, const std::string& name, int level,
                                   const StrongPtr<VParameter>& made, const std::type_info& type, bool input)
    IN_FRONT_OF(ADD_PARAMETER);
StrongPtr<VParameter> addParameter(VObject* that, const std::string& name, int level,
                                   const StrongPtr<VParameter>& made, const std::type_info& type,
                                   bool input) {
    call("addParameter(" + that->name() + ", " + name + ", " + number(level) + ", " + made->name() + ", " +
         typenameOf(type) + ", " + inputOrOutput(input) + ')');
    made->setState(changes().stateBits);
    return hosts<decltype(addParameter)>(ADD_PARAMETER)(that, name, level, made, type, input);
}

#define ADD_OUTPUT "_ZN4krod14VSlotContainer9addOutputERKNS_9StrongPtrINS_10VParameterEEE"
bool addOutput(VSlotContainer* self, const StrongPtr<VParameter>& made) IN_FRONT_OF(ADD_OUTPUT);
bool addOutput(VSlotContainer* self, const StrongPtr<VParameter>& made) {
    call("addOutput(" + made->name() + ')');
    return hosts<decltype(addOutput)>(ADD_OUTPUT)(self, made);
}

#define SET_PROPERTY                                                                                         \
    "_ZN4krod10VParameter11setPropertyERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERKNS_"          \
    "9StrongPtrINS_10"                                                                                       \
    "VValueBaseEEEPNS_17VPropertyNotifierE"
void setProperty(VParameter* self, const std::string& key, const StrongPtr<VValueBase>& value,
                 VPropertyNotifier* notifier) IN_FRONT_OF(SET_PROPERTY);
void setProperty(VParameter* self, const std::string& key, const StrongPtr<VValueBase>& value,
                 VPropertyNotifier* notifier) {
    call(self->name() + ".setProperty(" + key + ", " + value->text() + ')');
    hosts<decltype(setProperty)>(SET_PROPERTY)(self, key, value, notifier);
}

} // namespace calls
