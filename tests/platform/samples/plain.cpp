// SPDX-License-Identifier: Apache-2.0
// A library with a C function, a C++ function, an object, and something that it keeps to itself.

#define SAMPLE_EXPORT __attribute__((visibility("default")))

namespace sample {
SAMPLE_EXPORT int twice(int value);
int twice(int value) { return 2 * value; }
} // namespace sample

extern "C" {
SAMPLE_EXPORT int sample_answer(void);
int sample_answer(void) { return 42; }
SAMPLE_EXPORT extern int sample_object;
int sample_object = 7;
__attribute__((visibility("hidden"))) int sample_hidden(void);
int sample_hidden(void) { return 1; }
}
