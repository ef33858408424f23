// SPDX-License-Identifier: Apache-2.0
// A picture that another process decodes.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/files/reader/ReaderProgram.h"
#include "workbench/files/reader/SharedMemory.h"

#include <deque>

namespace workbench {

/// Reads through a process of its own, which may crash, hang or ask for all memory: that is Failure(Input)
/// here, as any other damage. While rows are read from the top, the next ones are decoded ahead.
class RemoteReader : public PictureReader {
public:
    /// The program is borrowed until this returns.
    RemoteReader(const std::filesystem::path& path, const PictureLimits& limits, ReaderProgram& program,
                 bool linear);

private:
    /// Rows that are asked for.
    struct Block {
        RowsRequest rows;
        bool isThere = false; ///< they are decoded
        [[nodiscard]] int end() const { return rows.first + rows.count; }
    };

    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    void makeMemory();
    void startAt(int row, bool extra);
    void askUpTo(int row);
    void awaitFront();
    const Block& blockWith(int row);
    void copyRows(const Block& block, int first, int count, krod::RGBAHalf* out);
    void copyExtra(const Block& block, int first, int count, int outRow, ExtraRows& extra) const;
    [[nodiscard]] Message answer(std::uint64_t decodedBytes);
    [[nodiscard]] std::string whatFails() const;
    [[noreturn]] void fail(std::string got);

    PictureLimits limits;
    Channel channel; ///< closed after an answer that ends the conversation
    RowMemory shape;
    SharedMemory memory;
    std::deque<Block> blocks;   ///< asked for, in the order of their rows
    std::uint64_t askedFor = 0; ///< blocks so far; they take the slots in turn
    int nextRow = 0;            ///< the first row that is not asked for
    bool withExtra = false;     ///< the blocks have additional channels
    int readUpTo = 0;           ///< where the last rows that were read ended
};

} // namespace workbench
