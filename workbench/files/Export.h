// SPDX-License-Identifier: Apache-2.0
// What the library of pictures, models and points shows to others.
#pragma once

/// Marks what is exported; everything else is compiled with hidden visibility.
#define KROD_FILES_API __attribute__((visibility("default")))
