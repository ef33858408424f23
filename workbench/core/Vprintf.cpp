// SPDX-License-Identifier: Apache-2.0
#include "host/core/Vprintf.h"

#include "workbench/core/Trace.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

namespace workbench {

namespace {

constinit std::atomic<int> traceLevel{0};

void printToStandardError(int /*level*/, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

struct Output {
    std::mutex mutex;
    TraceSink sink = printToStandardError;
};

/// Never destroyed: plug-ins trace until the process ends.
Output& output() {
    static Output& standard = *new Output;
    return standard;
}

/// The text that printf would print. The arguments are used up.
[[gnu::format(printf, 1, 0)]] std::string formatted(const char* format, std::va_list arguments) {
    std::string text(256, '\0');
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    if (length >= static_cast<int>(text.size())) {
        text.resize(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
    }
    va_end(again);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

[[gnu::format(printf, 2, 0)]] void trace(int level, const char* format, std::va_list arguments) {
    const std::string text = formatted(format, arguments);
    const std::lock_guard lock(output().mutex);
    output().sink(level, text);
}

} // namespace

void setTraceLevel(int level) noexcept { traceLevel.store(level, std::memory_order_relaxed); }

void setTraceSink(TraceSink sink) {
    const std::lock_guard lock(output().mutex);
    output().sink = sink ? std::move(sink) : TraceSink(printToStandardError);
}

} // namespace workbench

namespace krod {

void Vprintf(int level, const char* format, ...) noexcept {
    const int limit = workbench::traceLevel.load(std::memory_order_relaxed);
    if (limit <= 0 || level > limit) return;
    std::va_list arguments;
    va_start(arguments, format);
    try {
        workbench::trace(level, format, arguments);
    } catch (...) {
        // A trace line is lost rather than the work that it tells of: no memory, or a sink that throws.
    }
    va_end(arguments);
}

} // namespace krod
