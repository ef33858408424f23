// SPDX-License-Identifier: Apache-2.0
#include "host/values/VValueCreator.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace krod {

template class TypedValueCreator<int>;
template class TypedValueCreator<double>;
template class TypedValueCreator<bool>;
template class TypedValueCreator<std::string>;
template class TypedValueCreator<FlagList>;
template class TypedValueCreator<FixedArray<double, 2>>;

namespace {

struct Entry {
    std::string typeName;
    const VValueCreator* creator;
};

/// Begins with the host's own creators. Never destroyed, since libraries withdraw theirs until the process
/// ends.
class Registry {
public:
    static Registry& instance() {
        static Registry& registry = *new Registry;
        return registry;
    }

    void add(const std::string& typeName, const VValueCreator& creator) {
        const std::lock_guard lock(mutex);
        entries.push_back({typeName, &creator});
    }

    void remove(const VValueCreator& creator) {
        const std::lock_guard lock(mutex);
        std::erase_if(entries, [&](const Entry& entry) { return entry.creator == &creator; });
    }

    const VValueCreator* find(const std::string& typeName) {
        const std::lock_guard lock(mutex);
        const auto entry = std::ranges::find(entries, typeName, &Entry::typeName);
        return entry == entries.end() ? nullptr : entry->creator;
    }

private:
    TypedValueCreator<int> integers;
    TypedValueCreator<double> doubles;
    TypedValueCreator<bool> booleans;
    TypedValueCreator<std::string> texts;
    TypedValueCreator<FlagList> flagLists;
    TypedValueCreator<FixedArray<double, 2>> pairs;

    std::mutex mutex;
    std::vector<Entry> entries{
        {Typename<int>(), &integers},       {Typename<double>(), &doubles},
        {Typename<bool>(), &booleans},      {Typename<std::string>(), &texts},
        {Typename<FlagList>(), &flagLists}, {Typename<FixedArray<double, 2>>(), &pairs},
    };
};

} // namespace

VValueCreator::~VValueCreator() { Registry::instance().remove(*this); }

void VValueCreator::registerCreator(const std::string& typeName, VValueCreator& creator) {
    Registry::instance().add(typeName, creator);
}

const VValueCreator* VValueCreator::find(const std::string& typeName) noexcept {
    return Registry::instance().find(typeName);
}

} // namespace krod
