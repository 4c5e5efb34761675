#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "ovsel/model/blockpool.hpp"

TEST(BlockPool, GivesBlocksThatTouchNoOtherAndTakesThemInAnyOrder) {
    BlockPool pool;
    std::minstd_rand random(1);
    std::vector<std::pair<void*, std::string>> blocks; // and what they hold
    const auto freeLast = [&] {
        const auto& [block, text] = blocks.back();
        EXPECT_EQ(0, std::memcmp(block, text.data(), text.size())) << "of " << text.size() << " bytes";
        BlockPool::Free(block, text.size());
        blocks.pop_back();
    };
    for (int round = 0; round < 40'000; ++round) {
        const bool grows = (random() % 3 == 0) == (round >= 20'000);
        if (grows || blocks.empty()) {
            const std::string text(1 + random() % (BlockPool::MaxSize + 40), static_cast<char>(random()));
            void* const block = pool.Allocate(text.size());
            ASSERT_EQ(0u, reinterpret_cast<std::uintptr_t>(block) % sizeof(void*));
            blocks.emplace_back(std::memcpy(block, text.data(), text.size()), text);
        } else {
            std::swap(blocks[random() % blocks.size()], blocks.back());
            freeLast();
        }
    }
    while (!blocks.empty())
        freeLast();
    EXPECT_EQ(0u, pool.GetBlockCount());
}

TEST(BlockPool, StaysAsLongAsItsLastBlock) {
    auto* const pool = new BlockPool;
    const std::string text(600, 'x');
    void* const first = pool->Allocate(text.size());
    void* const last = pool->Allocate(text.size());
    BlockPool::Disown()(pool);
    BlockPool::Free(first, text.size());
    std::memcpy(last, text.data(), text.size());
    const std::vector<std::string> others(64, std::string(4'000, 'y')); // would get what the heap has back
    EXPECT_EQ(0, std::memcmp(last, text.data(), text.size()));
    BlockPool::Free(last, text.size());
}
