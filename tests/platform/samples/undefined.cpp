// SPDX-License-Identifier: Apache-2.0
// Needs a function that nobody has.

namespace sample {
int absent(int value);
}

extern "C" __attribute__((visibility("default"))) int sample_needs_absent(void);
extern "C" int sample_needs_absent(void) { return sample::absent(1); }
