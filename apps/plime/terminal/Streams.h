// SPDX-License-Identifier: Apache-2.0
// The three standard streams: results go to the real standard output, and nobody else's lines do.
#pragma once

#include <cstddef>
#include <string_view>

namespace workbench {

/// Made first in main, once. Descriptors 0 to 2 are occupied, so that no file that is opened later becomes
/// "standard output"; SIGPIPE and SIGXFSZ are ignored, so that they become errors of a write; the real
/// standard output is duplicated for results, and descriptor 1, where modules print lines of their own,
/// leads nowhere. A standard output that was closed counts as /dev/null.
class Streams {
public:
    Streams();
    ~Streams();
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    /// Leads the lines that modules print to standard error, each as soon as it is whole.
    void showModuleOutput();

    /// Writes a result. A reader that went away ("plime list | head") has what it wanted: the rest is
    /// dropped without an error. Throws Failure(Output) for every other failure.
    void write(std::string_view text);

    /// The descriptor of the results, for who streams by himself.
    [[nodiscard]] int results() const noexcept { return descriptor; }

    /// The width of the terminal that shows the results, in columns; 0 when they go elsewhere.
    [[nodiscard]] std::size_t columns() const noexcept;

    /// Closes the results and checks that they have arrived. Throws Failure(Output).
    void finish();

private:
    int descriptor = -1;
    bool readerGone = false;
};

} // namespace workbench
