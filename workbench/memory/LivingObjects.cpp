// SPDX-License-Identifier: Apache-2.0
#include "workbench/memory/LivingObjects.h"

#include "host/memory/Typename.h"
#include "workbench/memory/ReferenceCensus.h"

#include <cstring>
#include <typeinfo>

namespace workbench {

namespace {

// An object begins with the address of its virtual table (Itanium C++ ABI, 2.4). ReferenceBase has no base of
// its own, so its sub-object begins with the table of the most derived class, whatever inherits from it and
// how.
const void* virtualTableOf(const krod::ReferenceBase& object) {
    const void* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
    return table;
}

// The class stands just before its virtual table. The object itself is not asked: a library may have left it
// behind, and its table is gone with the library.
const std::type_info& classOf(const void* virtualTable) {
    return *static_cast<const std::type_info* const*>(virtualTable)[-1];
}

struct Found {
    LivingObject living;
    const void* virtualTable;
};

} // namespace

std::vector<LivingObject> livingObjects(const std::function<bool(const void*)>& ofInterest) {
    std::vector<Found> found;
    krod::ReferenceCensus::visit([&](const krod::ReferenceBase* object, std::int64_t strong, bool fixed) {
        found.push_back({{object, {}, strong, fixed}, virtualTableOf(*object)});
    });

    // The predicate and the names come after the census is unlocked: both may take their time.
    std::vector<LivingObject> chosen;
    for (Found& candidate : found) {
        if (!ofInterest(candidate.virtualTable)) continue;
        candidate.living.typeName = krod::typenameOf(classOf(candidate.virtualTable));
        chosen.push_back(std::move(candidate.living));
    }
    return chosen;
}

std::size_t livingObjectCount() noexcept { return krod::ReferenceCensus::size(); }

} // namespace workbench
