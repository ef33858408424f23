// SPDX-License-Identifier: Apache-2.0
// One row of a plug-in's catalogue: what a source unit registers while the library loads.
//
// Rows run from the last to the first and are withdrawn from the first to the last, whatever the order of
// object files on the link line and whatever the linker makes of them: KROD_ROW gives each its place. A row is
// two objects, in this order: the creator, then what is registered beside it. The first is sure to be destroyed
// with the library before the second is begun. Everything that a row touches is either constant-initialised or
// belongs to the host's libraries, which are complete before the plug-in starts. Memory that cannot be had
// leaves a row as a MemoryException, whoever asked for it.
#pragma once

#include "plugin/ApiKey.h"
#include "plugin/VCreator.h"
#include "plugin/VInputCreator.h"

#include "host/core/TypedSlot.h"
#include "host/memory/MemoryException.h"

#include <cstdio>
#include <string>

/// The place of the objects of a row: row n of the catalogue, 1 <= n < 1000.
#define KROD_ROW(row) [[gnu::init_priority(2000 - (row))]]

namespace krod {

/// The texts of a creator; those left out are not set.
struct CreatorTexts {
    const char* category = nullptr;
    const char* source = nullptr;
    const char* name = nullptr;
    const char* group = nullptr;
    const char* help = nullptr;
    const char* description = nullptr;
};

/// [load · gives] The property record, merged from one single-field value per text in the order of the record
/// above.
inline VCreatorProperties merged(const CreatorTexts& texts) {
    VCreatorProperties record;
    if (texts.category) VCreatorCategory(texts.category).assign(record);
    if (texts.source) VCreatorSource(texts.source).assign(record);
    if (texts.name) VCreatorName(texts.name).assign(record);
    if (texts.group) VCreatorGroup(texts.group).assign(record);
    if (texts.help) VCreatorHelp(texts.help).assign(record);
    if (texts.description) VCreatorDescription(texts.description).assign(record);
    return record;
}

/// The slot types of a row, registered from left to right and withdrawn from right to left.
template <class... Types>
struct SlotTypes : TypedSlot<Types>::Registration... {};

/// Registers a module as a creator, from construction to destruction.
template <class Module, class Extra>
class CreatorRegistration {
public:
    /// [load] Property form. Throws MemoryException.
    CreatorRegistration(const CreatorTexts& texts, int order) try
        : made(merged(texts), order, {}, false, ApiKey) {
    } catch (const std::bad_alloc&) {
        throw MemoryException();
    }
    /// [load] Name form: a creator without properties, whose name is the full key. Throws MemoryException.
    CreatorRegistration(const char* keyname, int order) try
        : made(std::string(keyname), order, {}, false, ApiKey) {
    } catch (const std::bad_alloc&) {
        throw MemoryException();
    }

    /// [load · borrows]
    [[nodiscard]] VCreator<Module, Extra>& creator() noexcept { return made; }

private:
    VCreator<Module, Extra> made;
};

/// Offers a creator as the source of inputs of one type, from construction to destruction. A host that
/// refuses gets a line on standard output and a warning; the creator stays registered as an ordinary one.
/// Withdrawing needs no memory.
template <class InputType, class Creator>
class InputRegistration {
    using Wrapper = VInputCreator<InputType, Creator>;

public:
    /// [load · borrows]
    explicit InputRegistration(Creator& creator) : wrapper(std::make_unique<Wrapper>(creator)) {
        if (registerVInput(typeid(InputType), *wrapper)) return;
        const std::string wrapperType = Typename<Wrapper>(), inputType = Typename<InputType>();
        std::printf("WARNING: Could not register %s as input creator for type %s!\n", wrapperType.c_str(),
                    inputType.c_str());
        VActionNotifier::Warning("Could not register " + wrapperType + " as input creator for type " +
                                 inputType + "!");
    }
    InputRegistration(const InputRegistration&) = delete;
    InputRegistration& operator=(const InputRegistration&) = delete;
    /// [load]
    ~InputRegistration() { unregisterVInput(typeid(InputType), *wrapper); }

private:
    AutoPtr<Wrapper> wrapper;
};

/// What is registered beside the creator of a source: the input creator for `InputType`, then the types of the
/// module's slots and output.
template <class Module, class InputType, class Types>
class SourceRegistration {
public:
    /// [load · borrows] Throws MemoryException.
    explicit SourceRegistration(CreatorRegistration<Module, void>& row) try : input(row.creator()) {
    } catch (const std::bad_alloc&) {
        throw MemoryException();
    }

private:
    InputRegistration<InputType, VCreator<Module, void>> input;
    [[no_unique_address]] Types types;
    ValueRegistration<InputType> value;
};

} // namespace krod
