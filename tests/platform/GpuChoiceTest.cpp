// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/GpuChoice.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

using workbench::GpuChoice;
using workbench::parseGpuChoice;

namespace {

TEST(GpuChoice, Every_form_is_read_and_written_again) {
    EXPECT_EQ(parseGpuChoice("auto").kind, GpuChoice::Kind::Automatic);
    EXPECT_EQ(parseGpuChoice("software").kind, GpuChoice::Kind::Software);
    EXPECT_EQ(parseGpuChoice("12").kind, GpuChoice::Kind::Index);
    EXPECT_EQ(parseGpuChoice("12").index, 12);
    EXPECT_EQ(parseGpuChoice("GeForce 9").kind, GpuChoice::Kind::Name);
    for (const char* text : {"auto", "software", "0", "12", "GeForce 9", "7900 XT"})
        EXPECT_EQ(parseGpuChoice(text).text(), text);
}

TEST(GpuChoice, What_is_no_device_is_an_error_of_use) {
    for (const char* text : {"", "-1", "+1", "99999999999"}) {
        try {
            (void)parseGpuChoice(text);
            ADD_FAILURE() << '"' << text << "\" is read";
        } catch (const workbench::Failure& failure) {
            EXPECT_EQ(failure.fault(), workbench::Fault::Usage);
            EXPECT_EQ(failure.diagnostic().got, '"' + std::string(text) + '"');
        }
    }
}

} // namespace
