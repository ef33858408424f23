// SPDX-License-Identifier: Apache-2.0
// State of libpng for one file, with error handlers that neither print nor end the program.
#pragma once

#include <array>
#include <csetjmp>
#include <string>
#include <vector>

#include <png.h>

namespace workbench {

/// Reads or writes one file. libpng leaves through longjmp when it fails, so its functions are called in
/// `succeeds` only.
class PngSession {
public:
    enum class Use { Read, Write };

    explicit PngSession(Use use);
    ~PngSession();
    PngSession(const PngSession&) = delete;
    PngSession& operator=(const PngSession&) = delete;

    /// False when libpng failed; `reason` says why. The work must not own anything that needs a destructor.
    template <typename Work>
    [[nodiscard]] bool succeeds(const Work& work) {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        work();
        return true;
    }

    [[nodiscard]] png_structp state() const { return png; }
    [[nodiscard]] png_infop info() const { return head; }
    /// Of the last failure.
    [[nodiscard]] std::string reason() const { return message.data(); }
    /// What libpng passed over so far, each once.
    [[nodiscard]] const std::vector<std::string>& warnings() const { return told; }

private:
    [[noreturn]] static void onError(png_structp png, png_const_charp text);
    static void onWarning(png_structp png, png_const_charp text);

    Use use;
    png_structp png = nullptr;
    png_infop head = nullptr;
    std::array<char, 256> message{}; ///< no std::string, since longjmp leaves the handler
    std::vector<std::string> told;
};

} // namespace workbench
