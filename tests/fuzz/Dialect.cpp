// SPDX-License-Identifier: Apache-2.0
// A shader text made ready for drivers, and a driver's log read with it. The log follows a line "--log--".
#include "Target.h"

#include "workbench/gl/dialect/ShaderLog.h"
#include "workbench/gl/dialect/Shims.h"

#include <algorithm>

namespace {

using namespace workbench;

constexpr std::string_view Mark = "--log--\n";

void checkColumns(const LineTable& table, int line) {
    const auto length = static_cast<int>(table.line(line).size());
    for (const int driverColumn : {-1, 0, 1, 2, length, length + 1, 1 << 30}) {
        const int column = table.sourceColumn(line, driverColumn);
        fuzz::require(column >= 0 && column <= length + 1, "a column lies in its line");
    }
}

void checkLog(std::string_view log, const LineTable& table) {
    for (const LogEntry& entry : parseShaderLog(log, table)) {
        fuzz::require(entry.textLine >= 0 && entry.textLine <= table.lineCount(), "a message's line exists");
        for (const std::string& line : renderLogEntry(entry, table))
            fuzz::require(line.empty() || fuzz::isOneLine(line), "a shown line has no control characters");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = fuzz::textOf(data, size);
    const std::size_t mark = std::min(input.find(Mark), input.size());
    const std::string_view text = input.substr(0, mark);
    const std::string_view log = input.substr(std::min(mark + Mark.size(), input.size()));
    for (const auto stage : {ShaderStage::Vertex, ShaderStage::Fragment}) {
        fuzz::require(adaptText(text, stage, true).joined() == text, "a strict text stands alone");
        const AdaptedText adapted = adaptText(text, stage, false, {{"prefix", 2}, {"body", 3}});
        const LineTable& table = adapted.lines;
        for (const int line : {1, 2, 3, 6, table.lineCount()}) {
            const bool exists = line >= 1 && line <= table.lineCount();
            fuzz::require(table.place(line).has_value() == exists, "every line of the text has a place");
            checkColumns(table, line);
        }
        checkLog(log, table);
    }
    return 0;
}
