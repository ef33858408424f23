// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/SharedLibrary.h"
#include "tests/platform/TemporaryFolder.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <utility>

using workbench::Failure;
using workbench::Fault;
using workbench::SharedLibrary;

namespace {

Failure failureOf(const std::filesystem::path& path) {
    try {
        const SharedLibrary library(path);
    } catch (const Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << path << " loads";
    return {Fault::Partial, {}};
}

TEST(Demangle, Only_mangled_names_change) {
    EXPECT_EQ(workbench::demangle("_ZN6sample6absentEi"), "sample::absent(int)");
    EXPECT_EQ(workbench::demangle("sample_answer"), "sample_answer");
    EXPECT_EQ(workbench::demangle("i"), "i");
    EXPECT_EQ(workbench::demangle("_Znonsense"), "_Znonsense");
    EXPECT_EQ(workbench::demangle(""), "");
}

TEST(SharedLibrary, Symbols_are_found_and_can_be_called) {
    const SharedLibrary library(SAMPLE_PLAIN);
    ASSERT_NE(library.symbol("sample_answer"), nullptr);
    EXPECT_EQ(library.function<int()>("sample_answer")(), 42);
    EXPECT_EQ(library.symbol("sample_nobody"), nullptr);
    EXPECT_EQ(library.symbol("sample_hidden"), nullptr);
}

TEST(SharedLibrary, Addresses_are_told_from_those_of_others) {
    const SharedLibrary library(SAMPLE_PLAIN);
    const int own = 0;
    EXPECT_TRUE(library.contains(library.symbol("sample_answer")));
    EXPECT_TRUE(library.contains(library.symbol("sample_object")));
    EXPECT_TRUE(library.range().contains(library.symbol("sample_object")));
    EXPECT_FALSE(library.contains(&own));
    EXPECT_FALSE(library.contains(nullptr));
    const SharedLibrary other(SAMPLE_PINNED);
    EXPECT_FALSE(library.contains(other.symbol("sample_pinned")));
    EXPECT_FALSE(library.range().contains(other.symbol("sample_pinned")));
}

TEST(SharedLibrary, Closed_library_is_unmapped_every_time) {
    for (int round = 0; round < 100; ++round) {
        SharedLibrary library(SAMPLE_PLAIN);
        const workbench::Unloading unloading = library.close();
        EXPECT_TRUE(unloading.unmapped) << unloading.reason;
        EXPECT_FALSE(library.isOpen());
        EXPECT_EQ(library.range().end, 0U);
        EXPECT_TRUE(library.close().unmapped);
    }
}

TEST(SharedLibrary, Library_linked_nodelete_is_reported_as_pinned) {
    SharedLibrary library(SAMPLE_PINNED);
    const void* const function = library.symbol("sample_pinned");
    const workbench::Unloading unloading = library.close();
    EXPECT_FALSE(unloading.unmapped);
    EXPECT_EQ(unloading.reason, "it is linked with -z nodelete");
    EXPECT_TRUE(library.contains(function)) << "its addresses are still its own";
}

TEST(SharedLibrary, Unique_symbol_is_reported_as_the_reason) {
    SharedLibrary library(SAMPLE_UNIQUE);
    ASSERT_NE(library.symbol("_ZN6sample4onceE"), nullptr) << "using the symbol is what pins";
    const workbench::Unloading unloading = library.close();
    EXPECT_FALSE(unloading.unmapped);
    EXPECT_EQ(unloading.reason, "it defines the unique symbol \"sample::once\"");
}

TEST(SharedLibrary, Second_handle_keeps_the_library) {
    SharedLibrary first(SAMPLE_PLAIN);
    SharedLibrary second(SAMPLE_PLAIN);
    EXPECT_FALSE(first.close().unmapped);
    EXPECT_EQ(second.function<int()>("sample_answer")(), 42);
    EXPECT_TRUE(second.close().unmapped);
}

TEST(SharedLibrary, Moved_library_has_one_owner) {
    SharedLibrary first(SAMPLE_PLAIN);
    SharedLibrary second(std::move(first));
    EXPECT_EQ(second.function<int()>("sample_answer")(), 42);
    SharedLibrary third(SAMPLE_PINNED);
    third = std::move(second);
    EXPECT_EQ(third.function<int()>("sample_answer")(), 42);
    EXPECT_TRUE(third.close().unmapped);
}

TEST(SharedLibrary, Undefined_symbol_is_named_readably) {
    const Failure failure = failureOf(SAMPLE_UNDEFINED);
    EXPECT_EQ(failure.fault(), Fault::Plugin);
    EXPECT_EQ(failure.diagnostic().sentence(),
              std::string(SAMPLE_UNDEFINED) +
                  ": cannot be loaded — expected every symbol to be defined by this host or by the library's "
                  "dependencies, got the undefined symbol \"sample::absent(int)\". Build the plug-in again "
                  "with the "
                  "headers of this host.");
    ASSERT_EQ(failure.diagnostic().details.size(), 1U);
    EXPECT_NE(failure.diagnostic().details[0].find("_ZN6sample6absentEi"), std::string::npos);
}

TEST(SharedLibrary, Relative_path_is_never_searched) {
    EXPECT_EQ(failureOf("libm.so.6").diagnostic().expected, "an absolute path");
}

TEST(SharedLibrary, Text_file_fails_with_the_words_of_the_loader) {
    const TemporaryFolder folder;
    const Failure failure = failureOf(folder.file("text.so", {'t', 'e', 'x', 't'}));
    EXPECT_EQ(failure.fault(), Fault::Plugin);
    EXPECT_EQ(failure.diagnostic().got, "file too short");
}

} // namespace
