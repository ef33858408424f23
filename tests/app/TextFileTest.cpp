// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/TextFile.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

TEST(Text_file, that_never_ends_is_refused) {
    EXPECT_EQ(failureOf([] { static_cast<void>(readTextFile("/dev/zero")); }),
              "3 /dev/zero: cannot be read — expected a text file of at most 16 MiB, got a larger one.");
}

TEST(Text_file, that_is_a_folder_is_refused) {
    EXPECT_EQ(failureOf([] { static_cast<void>(readTextFile("/")); }),
              "3 /: cannot be read — expected a text file of at most 16 MiB, got Is a directory.");
}

} // namespace
} // namespace workbench
