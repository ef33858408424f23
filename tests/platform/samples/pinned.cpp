// SPDX-License-Identifier: Apache-2.0
// Is linked so that the loader never removes it.

extern "C" __attribute__((visibility("default"))) int sample_pinned(void);
extern "C" int sample_pinned(void) { return 3; }
