// SPDX-License-Identifier: Apache-2.0
// One -o for many pictures.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Throws Failure(Usage) when -o has a word of letters in braces that is none of these; `expected` describes them.
void requireKnownPlaceholders(std::string_view pattern, const std::vector<std::string_view>& known,
                              const std::string& expected);

/// The name of an output with placeholders for the input's: {stem}, its file name without folder and
/// extension, and {ext}, its extension without the point. A word of letters in braces that is neither is
/// refused; all other braces stand for themselves, those of the input's name too.
class OutputPattern {
public:
    /// Throws Failure(Usage) for an unknown placeholder, naming the known ones.
    explicit OutputPattern(std::string pattern);

    [[nodiscard]] bool hasPlaceholder() const noexcept { return takesStem || takesExtension; }
    /// Whether the format of the output may differ from input to input.
    [[nodiscard]] bool hasStem() const noexcept { return takesStem; }
    [[nodiscard]] bool hasExtension() const noexcept { return takesExtension; }
    /// As it was typed.
    [[nodiscard]] const std::string& name() const noexcept { return text; }
    /// The output of that input.
    [[nodiscard]] std::string outputFor(const std::string& input) const;

private:
    std::string text;
    bool takesStem = false, takesExtension = false;
};

/// A picture and where it goes.
struct PictureJob {
    std::string input, output;
};

/// Pairs every input with its output. Throws Failure(Usage) for an input without a name.
[[nodiscard]] std::vector<PictureJob> planOutputs(const std::vector<std::string>& inputs,
                                                  const OutputPattern& pattern);

/// Throws Failure(Output) when a folder that a picture goes to does not exist: once for all pictures.
void requireFolders(const std::vector<PictureJob>& jobs);

} // namespace workbench
