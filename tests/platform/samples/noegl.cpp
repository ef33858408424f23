// SPDX-License-Identifier: Apache-2.0
// Takes the place of EGL and has none of its functions.

extern "C" __attribute__((visibility("default"))) int sample_no_egl;
int sample_no_egl = 0;
