// SPDX-License-Identifier: Apache-2.0
#include "host/memory/AutoPtr.h"
#include "host/memory/Chunk.h"
#include "host/memory/MemoryException.h"
#include "host/memory/StrongPtr.h"
#include "workbench/memory/LibraryScope.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <thread>

using namespace krod;
using workbench::LibraryScope;

TEST(Chunk, Store_ofManyElements_isContiguousAndValueInitialised) {
    const StrongPtr<Chunk<int>> chunk(new Chunk<int>(7));
    EXPECT_EQ(chunk->elements(), 7u);
    EXPECT_EQ(chunk->bytes(), 7 * sizeof(int));
    for (std::size_t i = 0; i < chunk->elements(); ++i) EXPECT_EQ(chunk->data()[i], 0);
    EXPECT_EQ(Chunk<int>(0).bytes(), 0u);
}

TEST(Chunk, Store_takenOver_keepsElements) {
    std::vector<short> elements{3, 1, 2};
    const short* const place = elements.data();
    Chunk<short> chunk(std::move(elements));
    EXPECT_EQ(chunk.data(), place);
    EXPECT_EQ(chunk.data()[1], 1);
}

TEST(Chunk, Base_castToElementKind_decidesTheKind) {
    const StrongPtr<ChunkBase> chunk = StrongPtr<Chunk<float>>(new Chunk<float>(2));
    EXPECT_TRUE(castStrong<Chunk<float>>(chunk));
    EXPECT_FALSE(castStrong<Chunk<int>>(chunk));
}

TEST(MemoryException, Allocation_tooLarge_isRefused) {
    const volatile std::size_t tooMuch = std::numeric_limits<std::size_t>::max() / 2;
    EXPECT_THROW(ReferenceBase::operator delete(ReferenceBase::operator new(tooMuch)), MemoryException);
    EXPECT_STREQ(MemoryException().what(), "not enough memory");
}

TEST(PointerException, EmptyPointer_checked_namesThePlace) {
    int value = 0;
    EXPECT_NO_THROW(checkPointer(&value, "nowhere"));
    try {
        checkPointer(StrongPtr<ChunkBase>(), "Slot(owner)");
        FAIL() << "an empty reference must be refused";
    } catch (const PointerException& failure) {
        EXPECT_STREQ(failure.what(), "empty pointer in Slot(owner)");
    }
}

TEST(AutoPtr, Holder_goes_deletesObject) {
    bool deleted = false;
    struct Notice {
        bool& deleted;
        ~Notice() { deleted = true; }
    };
    { const AutoPtr<Notice> holder(new Notice{deleted}); }
    EXPECT_TRUE(deleted);
}

TEST(LibraryScope, Scopes_nested_innermostCountsOnThisThreadOnly) {
    EXPECT_EQ(LibraryScope::current(), 0);
    const LibraryScope outer(3);
    {
        const LibraryScope inner(5);
        EXPECT_EQ(LibraryScope::current(), 5);
        workbench::LibraryId elsewhere = -1;
        std::thread([&] { elsewhere = LibraryScope::current(); }).join();
        EXPECT_EQ(elsewhere, 0);
    }
    EXPECT_EQ(LibraryScope::current(), 3);
}
