// SPDX-License-Identifier: Apache-2.0
// ELF delivers attach and detach only.
//
// Detach has to come before any creator goes, on dlclose and on exit alike. The object below is made after
// all creators (see KROD_ROW) and destroyed before them, which is right on exit; the destructor function runs
// first on dlclose. Either one alone is wrong on one of the two ways, so both call the same run-once
// function.
#include "plugin/LoadHook.h"

namespace {

constinit bool attached = false;

void detachOnce() {
    if (!attached) return;
    attached = false;
    krod::hook::notify(krod::hook::ProcessDetach);
}

struct Hook {
    Hook() {
        attached = true;
        krod::hook::notify(krod::hook::ProcessAttach);
    }
    Hook(const Hook&) = delete;
    Hook& operator=(const Hook&) = delete;
    ~Hook() { detachOnce(); }
};

[[gnu::init_priority(3000)]] const Hook hook;

[[gnu::destructor]] void finish() { detachOnce(); }

} // namespace
