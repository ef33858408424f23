// SPDX-License-Identifier: Apache-2.0
// What tests of the program share that leave pictures.
#pragma once

#include "tests/app/Program.h"
#include "tests/files/FilesTest.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

/// An environment in which no OpenGL can be had.
inline const std::map<std::string, std::string> WithoutOpenGL = {
    {"EGL_PLATFORM", "nonsense"}, {"__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent"}, {"DISPLAY", ""}};

/// What the first signal is answered with at once.
inline const std::string SignalAnswer =
    "plime: interrupted; the run ends after the tile or step that it is at. A second Ctrl-C ends it at "
    "once.\n";

/// The words one after the other.
[[nodiscard]] Words operator+(Words words, const Words& more);
/// How often a text occurs in another.
[[nodiscard]] std::size_t occurrences(const std::string& text, const std::string& part);
/// The steps between two halves as they are stored; of two numbers that are no halves, a great many.
[[nodiscard]] int halfSteps(half_float::half a, half_float::half b);
/// The share of the pixels whose four values differ by no more than so many half steps.
[[nodiscard]] double shareWithin(int steps, const workbench::Picture& a, const workbench::Picture& b);
/// For Call::meanwhile: sends SIGINT as soon as a file appears in the folder.
[[nodiscard]] std::function<void(int)> interruptAtFirstFile(const std::filesystem::path& folder);

/// A test in a folder of its own.
class PictureProgramTest : public FilesTest {
protected:
    /// The path of a file in the folder.
    [[nodiscard]] std::string at(const std::string& name) const { return (folder / name).string(); }

    /// Runs the program, which must succeed without a word.
    static void succeed(const Words& words);
    /// Runs the program, which must succeed, and gives what it says.
    static std::string messagesOf(const Words& words);
    /// Runs the program, which must end with that code and exactly that sentence, and leave the folder as it
    /// was. Details may follow the sentence; with the code 130 the answer to the signal comes before it.
    void expectFailure(int code, const std::string& sentence, const Call& call) const;
    void expectFailure(int code, const std::string& sentence, const Words& words) const {
        expectFailure(code, sentence, Call{words});
    }

    /// Writes a picture into the folder and gives its path.
    [[nodiscard]] std::string picture(const std::string& name, const workbench::Picture& contents,
                                      const workbench::WriteOptions& options = {}) const {
        workbench::writePicture(folder / name, contents, options);
        return at(name);
    }
};
