// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/LibraryCalls.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

/// The tables of a library that say where its calls lead.
struct Tables {
    const ElfW(Sym) * symbols = nullptr;
    const char* texts = nullptr;
    const ElfW(Rela) * entries[2] = {}; ///< of functions that are called, and of those whose address is taken
    std::size_t bytes[2] = {};
};

Tables tablesOf(const link_map& library) {
    Tables tables;
    for (const ElfW(Dyn)* entry = library.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const auto pointer = entry->d_un.d_ptr;
        if (entry->d_tag == DT_SYMTAB) tables.symbols = reinterpret_cast<const ElfW(Sym)*>(pointer);
        if (entry->d_tag == DT_STRTAB) tables.texts = reinterpret_cast<const char*>(pointer);
        if (entry->d_tag == DT_JMPREL) tables.entries[0] = reinterpret_cast<const ElfW(Rela)*>(pointer);
        if (entry->d_tag == DT_PLTRELSZ) tables.bytes[0] = entry->d_un.d_val;
        if (entry->d_tag == DT_RELA) tables.entries[1] = reinterpret_cast<const ElfW(Rela)*>(pointer);
        if (entry->d_tag == DT_RELASZ) tables.bytes[1] = entry->d_un.d_val;
    }
    return tables;
}

/// Writes to a place that is protected after loading.
void write(void** place, void* value) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    void* const begin = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(place) / page * page);
    if (::mprotect(begin, page, PROT_READ | PROT_WRITE) != 0)
        throw std::runtime_error("the calls of the library cannot be redirected");
    *place = value;
}

} // namespace

void redirectCalls(const std::string& library, const std::function<void*(std::string_view)>& instead) {
    void* const handle = ::dlopen(library.c_str(), RTLD_NOLOAD | RTLD_LAZY);
    link_map* map = nullptr;
    if (!handle || ::dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0)
        throw std::runtime_error(library + " is not loaded");
    const Tables tables = tablesOf(*map);
    for (int table = 0; table < 2; ++table)
        for (std::size_t i = 0; i < tables.bytes[table] / sizeof(ElfW(Rela)); ++i) {
            const ElfW(Rela)& entry = tables.entries[table][i];
            const auto type = ELF64_R_TYPE(entry.r_info);
            if (type != R_X86_64_JUMP_SLOT && type != R_X86_64_GLOB_DAT) continue;
            const char* const name = tables.texts + tables.symbols[ELF64_R_SYM(entry.r_info)].st_name;
            if (void* const other = instead(name))
                write(reinterpret_cast<void**>(map->l_addr + entry.r_offset), other);
        }
    ::dlclose(handle);
}

} // namespace workbench::validate
