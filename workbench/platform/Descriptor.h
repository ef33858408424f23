// SPDX-License-Identifier: Apache-2.0
// Open files by their numbers.
#pragma once

#include <span>
#include <utility>

namespace workbench {

/// Owns the number of an open file, and closes it at the end of its scope. -1 is none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) noexcept : number(number) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~Descriptor() { close(); }

    void close() noexcept;
    [[nodiscard]] int get() const noexcept { return number; }

private:
    int number;
};

/// The two ends of a pipe. Programs that are started do not get them unless they are handed over.
struct Pipe {
    Descriptor read, write;

    /// Throws std::system_error where this process may open no more files.
    Pipe();
};

/// A file in memory with those bytes, to be read from its beginning: its reader takes its time, and it never
/// fills up as a pipe does. `name` is only seen in lists of open files. Throws std::system_error.
[[nodiscard]] Descriptor memoryFile(const char* name, std::span<const char> bytes);

} // namespace workbench
