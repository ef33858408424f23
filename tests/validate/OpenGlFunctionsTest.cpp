// SPDX-License-Identifier: Apache-2.0
// The list of functions that can be made to go wrong is typed by hand; the sources tell whether it is whole.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace {

using Names = std::set<std::string>;

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Names matches(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    Names names;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

/// What is called in the sources of a folder.
Names calledIn(const std::string& folder) {
    Names names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SOURCES "/" + folder))
        if (entry.path().extension() == ".cpp")
            names.merge(matches(contentOf(entry.path()), R"(\b(gl[A-Z][A-Za-z0-9_]*)\()"));
    names.erase("glRenderFullScreen"); // the host's own
    return names;
}

} // namespace

TEST(OpenGlFunctions, List_has_every_function_that_host_and_modules_call) {
    const Names listed = matches(contentOf(SOURCES "/workbench/validate/OpenGlFunctions.inc"),
                                 R"(FUNCTION\((gl[A-Za-z0-9_]+)\))");
    Names called;
    for (const char* folder : {"workbench/gl", "workbench/objects", "src/display", "src/tile"})
        called.merge(calledIn(folder));
    EXPECT_GT(called.size(), 50U);
    for (const std::string& name : called) EXPECT_TRUE(listed.contains(name)) << name;
}
