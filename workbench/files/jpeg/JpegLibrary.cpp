// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/jpeg/JpegLibrary.h"

#include <algorithm>
#include <new>

namespace workbench {

JpegMessages::JpegMessages() {
    jpeg_std_error(&manager.functions);
    manager.functions.error_exit = onError;
    manager.functions.emit_message = onMessage;
    manager.functions.output_message = [](j_common_ptr) {};
    manager.owner = this;
}

JpegMessages& JpegMessages::of(j_common_ptr state) { return *reinterpret_cast<Manager*>(state->err)->owner; }

void JpegMessages::onError(j_common_ptr state) {
    JpegMessages& messages = of(state);
    state->err->format_message(state, messages.text.data());
    std::longjmp(messages.jump, 1);
}

void JpegMessages::onMessage(j_common_ptr state, int level) {
    if (level >= 0) return; // what it does, not what is wrong
    JpegMessages& messages = of(state);
    const int number = state->err->msg_code;
    if (messages.numbers.empty()) state->err->format_message(state, messages.firstWarning.data());
    try { // a damaged file may cause one for each block
        if (std::find(messages.numbers.begin(), messages.numbers.end(), number) == messages.numbers.end())
            messages.numbers.push_back(number);
    } catch (const std::bad_alloc&) { // a word less
    }
}

void JpegMessages::forgetWarnings() {
    numbers.clear();
    firstWarning = {};
}

} // namespace workbench
