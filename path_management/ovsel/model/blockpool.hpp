#pragma once

#include <array>
#include <cstddef>
#include <vector>

/// Memory for the small objects of one path, records and names side by side in the order in which a directory
/// brings them: what a look-up touches together lies together, and none of them pays for a heap's
/// bookkeeping.
///
/// A block that fits into a line of the processor's caches lies in one; longer ones lie close together, apart
/// from those; one of many lines begins where a line does. One that is given back serves the next object of
/// its size. The heap gets its memory again when no block is in use any more. Belongs to the path's
/// thread.
///
/// A block finds its pool through the page in which it lies, so that whoever gives it back need not know the
/// pool, which has to be alive. Under the address sanitizer each block comes from the heap: it then sees what
/// is used too late.
class BlockPool {
  public:
    /// Larger blocks come from the heap.
    static constexpr std::size_t MaxSize = 640;

    /// Lets the pool go, which stays until its last block has been given back.
    struct Disown {
        void operator()(BlockPool* pool) const noexcept;
    };

    BlockPool() = default;
    /// @pre no block is in use
    ~BlockPool() { Clear(); }
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// Aligned for pointers. @throws std::bad_alloc, and then nothing has changed.
    void* Allocate(std::size_t size);
    /// @p size as it was asked for.
    static void Free(void* block, std::size_t size) noexcept;

    std::size_t GetBlockCount() const { return m_blockCount; }

  private:
    static constexpr std::size_t PageSize = 4096;
    static constexpr std::size_t MaxChunkPages = 16;
    static constexpr std::size_t Grain = sizeof(void*);
    static constexpr std::size_t CacheLine = 64;
    static constexpr std::size_t ManyLines = 4 * CacheLine;

    struct Page {
        BlockPool* pool;
    };
    struct FreeBlock {
        FreeBlock* next;
    };
    struct Chunk {
        std::byte* pages;
        std::size_t count;
    };

    /// The rest of a page that is being filled.
    struct Strip {
        std::byte* next = nullptr;
        std::byte* end = nullptr;
    };

    static std::size_t SizeClass(std::size_t size) { return (size + Grain - 1) / Grain; }
    void* Cut(std::size_t room);
    static std::size_t GapBefore(const Strip& strip, std::size_t room);
    void BeginPage(Strip& strip);
    void AddChunk();
    void Clear() noexcept;

    Strip m_lines;                   ///< for blocks that fit into a line
    Strip m_longer;                  ///< for others
    std::byte* m_nextPage = nullptr; ///< of the last chunk, not begun yet
    std::byte* m_chunkEnd = nullptr;
    std::size_t m_blockCount = 0;
    bool m_isDisowned = false;
    std::vector<Chunk> m_chunks; ///< the last one is being filled
    std::array<FreeBlock*, MaxSize / Grain + 1> m_free{};
};
