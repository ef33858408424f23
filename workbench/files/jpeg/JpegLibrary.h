// SPDX-License-Identifier: Apache-2.0
// State of libjpeg for one file, with error handlers that neither print nor end the program.
#pragma once

#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include <jpeglib.h>

namespace workbench {

/// What libjpeg says. Its functions are called in `succeeds` only, since it leaves through longjmp when it fails.
class JpegMessages {
public:
    JpegMessages();
    JpegMessages(const JpegMessages&) = delete;
    JpegMessages& operator=(const JpegMessages&) = delete;

    /// False when libjpeg failed; `reason` says why. The work must not own anything that needs a destructor.
    template <typename Work>
    [[nodiscard]] bool succeeds(const Work& work) {
        if (setjmp(jump) != 0) return false;
        work();
        return true;
    }

    /// For the member `err` of libjpeg's state.
    [[nodiscard]] jpeg_error_mgr* handlers() { return &manager.functions; }
    /// Of the last failure.
    [[nodiscard]] std::string reason() const { return text.data(); }
    /// The numbers and the first text of warnings so far.
    [[nodiscard]] const std::vector<int>& warnings() const { return numbers; }
    [[nodiscard]] std::string warningText() const { return firstWarning.data(); }
    void forgetWarnings();

private:
    /// libjpeg hands out the address of the functions.
    struct Manager {
        jpeg_error_mgr functions;
        JpegMessages* owner;
    };
    using Text = std::array<char, JMSG_LENGTH_MAX>;

    static JpegMessages& of(j_common_ptr state);
    [[noreturn]] static void onError(j_common_ptr state);
    static void onMessage(j_common_ptr state, int level);

    Manager manager{};
    std::jmp_buf jump;
    Text text{}, firstWarning{}; ///< no std::string, since longjmp leaves the handler
    std::vector<int> numbers;
};

} // namespace workbench
