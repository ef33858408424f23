// SPDX-License-Identifier: Apache-2.0
#include "host/core/TypedSlot.h"

#include "workbench/memory/LibraryScope.h"

#include <algorithm>
#include <mutex>
#include <typeindex>
#include <vector>

namespace krod {

namespace {

struct Entry {
    std::type_index type; ///< of the library that registers, which withdraws the entry before it leaves
    std::string typeName;
    const TypedSlotCreator* creator;
    workbench::LibraryId library;
};

/// Begins with the host's own creators. Never destroyed, since libraries withdraw theirs until the process
/// ends.
class Registry {
public:
    static Registry& instance() {
        static Registry& registry = *new Registry;
        return registry;
    }

    void add(const std::type_info& type, const std::string& typeName, const TypedSlotCreator& creator) {
        const std::lock_guard lock(mutex);
        entries.push_back({type, typeName, &creator, workbench::LibraryScope::current()});
    }

    /// Outside of any scope every library is meant, since a process that ends unloads libraries by itself.
    void removeNewest(const std::type_info& type, const std::string& typeName) {
        const workbench::LibraryId library = workbench::LibraryScope::current();
        const std::lock_guard lock(mutex);
        const auto newest = std::find_if(entries.rbegin(), entries.rend(), [&](const Entry& entry) {
            return entry.type == type && entry.typeName == typeName &&
                   (library == 0 || entry.library == library);
        });
        if (newest != entries.rend()) entries.erase(std::next(newest).base());
    }

    const TypedSlotCreator* find(const std::type_info& type) {
        const std::lock_guard lock(mutex);
        const auto entry = std::ranges::find(entries, std::type_index(type), &Entry::type);
        return entry == entries.end() ? nullptr : entry->creator;
    }

private:
    template <class T>
    static Entry entryOf(const TypedSlotCreator& creator) {
        return {typeid(T), Typename<T>(), &creator, 0};
    }

    TypedSlot<int>::SlotCreator integers;
    TypedSlot<double>::SlotCreator doubles;
    TypedSlot<bool>::SlotCreator booleans;
    TypedSlot<std::string>::SlotCreator texts;
    TypedSlot<FlagList>::SlotCreator flagLists;
    TypedSlot<FixedArray<double, 2>>::SlotCreator pairs;

    std::mutex mutex;
    std::vector<Entry> entries{entryOf<int>(integers),       entryOf<double>(doubles),
                               entryOf<bool>(booleans),      entryOf<std::string>(texts),
                               entryOf<FlagList>(flagLists), entryOf<FixedArray<double, 2>>(pairs)};
};

} // namespace

std::atomic<std::int64_t> TypedSlotCreator::InternalTypeCreatorAccessory{0};

TypedSlotCreator::~TypedSlotCreator() = default;

void TypedSlotCreator::registerTypedSlotCreator(const std::type_info& type, TypedSlotCreator& creator,
                                                const std::string& typeName) {
    Registry::instance().add(type, typeName, creator);
}

void TypedSlotCreator::unregisterTypedSlotCreator(const std::type_info& type,
                                                  const std::string& typeName) noexcept {
    Registry::instance().removeNewest(type, typeName);
}

const TypedSlotCreator* TypedSlotCreator::find(const std::type_info& type) noexcept {
    return Registry::instance().find(type);
}

} // namespace krod
