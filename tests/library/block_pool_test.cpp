#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "ovsel/model/blockpool.hpp"

namespace {

struct Block {
    unsigned char* bytes;
    std::size_t size;
    unsigned char mark;

    bool IsWhole() const {
        for (std::size_t i = 0; i < size; ++i)
            if (bytes[i] != mark)
                return false;
        return true;
    }
};

TEST(BlockPool, GivesBlocksThatTouchNoOtherAndTakesThemInAnyOrder) {
    BlockPool pool;
    std::minstd_rand random(1);
    std::vector<Block> blocks;
    for (int round = 0; round < 40'000; ++round) {
        const bool grows = round < 20'000 ? random() % 3 != 0 : random() % 3 == 0;
        if (grows || blocks.empty()) {
            const std::size_t size = 1 + random() % (BlockPool::MaxSize + 40);
            Block block{static_cast<unsigned char*>(pool.Allocate(size)), size,
                        static_cast<unsigned char>(random())};
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block.bytes) % sizeof(void*), 0u);
            std::memset(block.bytes, block.mark, size);
            blocks.push_back(block);
            continue;
        }
        std::swap(blocks[random() % blocks.size()], blocks.back());
        ASSERT_TRUE(blocks.back().IsWhole()) << "of " << blocks.back().size << " bytes in round " << round;
        BlockPool::Free(blocks.back().bytes, blocks.back().size);
        blocks.pop_back();
    }
    for (const Block& block : blocks) {
        ASSERT_TRUE(block.IsWhole());
        BlockPool::Free(block.bytes, block.size);
    }
    EXPECT_EQ(pool.GetBlockCount(), 0u);
}

} // namespace
