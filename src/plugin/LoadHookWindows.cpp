// SPDX-License-Identifier: Apache-2.0
// Windows delivers all four notifications, in the numbers that the hook takes.
#include "plugin/LoadHook.h"

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD notification, LPVOID) {
    return krod::hook::notify(notification) ? TRUE : FALSE;
}
