// SPDX-License-Identifier: Apache-2.0
// Ownership of OpenGL names.
#pragma once

#include <utility>

namespace workbench {

/// Owns one OpenGL name and deletes it. The context that it belongs to must be current from making to
/// deleting.
class GLName {
public:
    enum class Kind { Texture, Framebuffer, Shader, Program };

    /// A new texture or framebuffer name.
    explicit GLName(Kind kind);
    /// Takes over a name; 0 stands for none.
    GLName(Kind kind, unsigned name) noexcept : kind(kind), name(name) {}
    GLName(GLName&& other) noexcept : kind(other.kind), name(std::exchange(other.name, 0U)) {}
    GLName& operator=(GLName&& other) noexcept {
        std::swap(kind, other.kind);
        std::swap(name, other.name);
        return *this;
    }
    ~GLName();

    [[nodiscard]] unsigned get() const noexcept { return name; }

private:
    Kind kind;
    unsigned name = 0;
};

} // namespace workbench
