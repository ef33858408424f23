// SPDX-License-Identifier: Apache-2.0
// Memory that two processes see.
#pragma once

#include <cstddef>

namespace workbench {

/// A piece of memory of a fixed size, which nobody can make larger or smaller. It is gone as soon as both
/// processes have let go of it, in whatever way. A file in memory would not do: its size counts against the
/// largest file that a user allows.
class SharedMemory {
public:
    /// New memory, of zeros, which only the other process can change. Throws std::system_error.
    [[nodiscard]] static SharedMemory create(std::size_t size);
    /// The memory that another process has created, and whether it has that size. Throws std::system_error.
    [[nodiscard]] static SharedMemory attach(int id, std::size_t size);

    SharedMemory() = default;
    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&& other) noexcept;
    ~SharedMemory();

    /// Null where there is none.
    [[nodiscard]] std::byte* data() const { return begin; }
    [[nodiscard]] int id() const { return number; }

private:
    SharedMemory(int id, int flags);

    int number = -1;
    std::byte* begin = nullptr;
};

} // namespace workbench
