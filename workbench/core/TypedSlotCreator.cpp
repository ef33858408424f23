// SPDX-License-Identifier: Apache-2.0
#include "host/core/TypedSlotCreator.h"

#include "workbench/memory/LibraryScope.h"

#include <algorithm>
#include <mutex>
#include <typeindex>
#include <vector>

namespace krod {

namespace {

/// The host's own creator for a type.
template <class T>
class HostSlotCreator : public TypedSlotCreator {
public:
    [[nodiscard]] StrongPtr<VParameter> create(const std::string& name) const override {
        return StrongPtr<VParameter>(new VParameter(makeValue(T{}), name, nullptr));
    }
};

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
    static Entry entryOf(const HostSlotCreator<T>& creator) {
        return {typeid(T), Typename<T>(), &creator, 0};
    }

    HostSlotCreator<int> integers;
    HostSlotCreator<double> doubles;
    HostSlotCreator<bool> booleans;
    HostSlotCreator<std::string> texts;
    HostSlotCreator<FlagList> flagLists;
    HostSlotCreator<FixedArray<double, 2>> pairs;

    std::mutex mutex;
    std::vector<Entry> entries{entryOf(integers), entryOf(doubles),   entryOf(booleans),
                               entryOf(texts),    entryOf(flagLists), entryOf(pairs)};
};

} // namespace

std::atomic<long> TypedSlotCreator::InternalTypeCreatorAccessory{0};

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
