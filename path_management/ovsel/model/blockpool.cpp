#include "ovsel/model/blockpool.hpp"

#include <algorithm>
#include <cstdint>
#include <new>

#include "ovsel/names/makeroom.hpp"

#if defined(__SANITIZE_ADDRESS__)
#define OVSEL_BLOCKS_FROM_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OVSEL_BLOCKS_FROM_HEAP 1
#endif
#endif

namespace {

#ifdef OVSEL_BLOCKS_FROM_HEAP
constexpr bool blocksComeFromHeap = true;
#else
constexpr bool blocksComeFromHeap = false;
#endif

} // namespace

void* BlockPool::Allocate(std::size_t size) {
    if (size > MaxSize || blocksComeFromHeap)
        return ::operator new(size);
    const std::size_t sizeClass = SizeClass(size);
    void* block = m_free[sizeClass];
    if (block)
        m_free[sizeClass] = m_free[sizeClass]->next;
    else
        block = Cut(sizeClass * Grain);
    ++m_blockCount;
    return block;
}

/// A new block.
inline void* BlockPool::Cut(std::size_t room) {
    Strip& strip = room <= CacheLine ? m_lines : m_longer;
    std::size_t gap = GapBefore(strip, room);
    if (gap + room > static_cast<std::size_t>(strip.end - strip.next)) {
        BeginPage(strip);
        gap = GapBefore(strip, room);
    }
    std::byte* const block = strip.next + gap;
    strip.next = block + room;
    return block;
}

void BlockPool::Disown::operator()(BlockPool* pool) const noexcept {
    if (pool->m_blockCount == 0)
        delete pool;
    else
        pool->m_isDisowned = true;
}

void BlockPool::Free(void* block, std::size_t size) noexcept {
    if (size > MaxSize || blocksComeFromHeap) {
        ::operator delete(block);
        return;
    }
    constexpr auto pageMask = ~static_cast<std::uintptr_t>(PageSize - 1);
    BlockPool& pool =
        *reinterpret_cast<const Page*>(reinterpret_cast<std::uintptr_t>(block) & pageMask)->pool;
    if (--pool.m_blockCount == 0) {
        if (pool.m_isDisowned)
            delete &pool;
        else
            pool.Clear();
        return;
    }
    FreeBlock*& first = pool.m_free[SizeClass(size)];
    first = new (block) FreeBlock{first};
}

/// What is left of the present line, if the block fits into a line but not into that, or is many lines long.
std::size_t BlockPool::GapBefore(const Strip& strip, std::size_t room) {
    const std::size_t used = reinterpret_cast<std::uintptr_t>(strip.next) % CacheLine;
    const std::size_t left = CacheLine - used;
    if (room > ManyLines)
        return used == 0 ? 0 : left;
    return room <= left || room > CacheLine ? 0 : left;
}

void BlockPool::BeginPage(Strip& strip) {
    if (m_nextPage == m_chunkEnd)
        AddChunk();
    std::byte* const page = m_nextPage;
    m_nextPage += PageSize;
    new (page) Page{this};
    strip = {page + sizeof(Page), page + PageSize};
}

/// Chunks grow, so that a small path costs a page and a large one few requests.
void BlockPool::AddChunk() {
    MakeRoom(m_chunks);
    const std::size_t count = m_chunks.empty() ? 1 : std::min(2 * m_chunks.back().count, MaxChunkPages);
    void* const pages = ::operator new(count* PageSize, std::align_val_t(PageSize));
    m_chunks.push_back({static_cast<std::byte*>(pages), count});
    m_nextPage = m_chunks.back().pages;
    m_chunkEnd = m_nextPage + count * PageSize;
}

void BlockPool::Clear() noexcept {
    for (const Chunk& chunk : m_chunks)
        ::operator delete(chunk.pages, std::align_val_t(PageSize));
    m_chunks.clear();
    m_free = {};
    m_lines = m_longer = {};
    m_nextPage = m_chunkEnd = nullptr;
}
