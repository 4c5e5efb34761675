#pragma once

#include <optional>
#include <utility>
#include <vector>

#include <boost/container/small_vector.hpp>

#include "ovsel/model/pathalldiriteminfo.hpp"
#include "ovsel/names/makeroom.hpp"

class PathInfo;

/// A directory that stands on the path, or the current directory, which is position 0.
class PathDirItemInfo : public PathAllDirItemInfo {
  public:
    /// Holds a record until a path list takes it over.
    using Owner = std::unique_ptr<PathDirItemInfo, Discard>;

    /// @p leaf is the last element of @p fullName, or the whole of it for a root.
    PathDirItemInfo(IPathManager* manager, const ustring& fullName, std::u16string_view leaf,
                    std::int32_t position, ovDirType type);
    /// From a location, in the storage layer's mode; ends the process outside it. Takes no file-system row.
    PathDirItemInfo(IPathManager* manager, const foundation::storage::vfs::AbsoluteIRI& location,
                    std::int32_t position, ovDirType type);

    /// Side by side with the other directories of the path: a look-up that ends in any of thousands, or a
    /// check of all, then touches as few pages of memory as can be.
    static void* operator new(std::size_t size, IPathManager* manager);
    static void operator delete(void* block, std::size_t size);
    /// Of one whose construction fails.
    static void operator delete(void* block, IPathManager*);

    void AppendName(ustring& path) const override;
    bool MatchesDiskName(std::u16string_view name) const override { return name == m_fullName; }

    /// The absolute name as given.
    const ustring& GetStoredFullName() const { return m_fullName; }
    /// @pre the storage layer's mode; ends the process outside it.
    const foundation::storage::vfs::AbsoluteIRI& GetDirectoryAbsoluteIRI() const;

    /// 0 the current directory, 1 and above a place on the path, -1 none.
    std::int32_t GetOrder() const { return m_order; }
    void SetOrder(std::int32_t order) { m_order = order; }
    bool IsOnPath() const { return m_order >= 0; }
    /// Does the directory lie under the path's pre-frozen prefix? Decided at construction.
    bool IsPreFrozen() const { return m_preFrozen; }

    /// Place in a path list; -1 if it is not there.
    std::int32_t GetPositionIn(const PathInfo* list) const;
    void SetPositionIn(const PathInfo* list, std::int32_t position);
    void RemovePositionIn(const PathInfo* list);

    bool HasReplaceMark() const { return m_replaceMark; }
    void SetReplaceMark(bool on) { m_replaceMark = on; }

    /// Takes the record out of the index of full names, before it leaves its chain.
    void LeaveFullNameIndex();

    /// Has the processor fetch what a check will touch, the name's text not included, and go on meanwhile.
    void FetchAhead() const {
        // A line more, since the record need not begin where one does.
        const char* const end = reinterpret_cast<const char*>(&m_nameAtHand) + CacheLine;
        for (const char* line = reinterpret_cast<const char*>(this); line < end; line += CacheLine)
            __builtin_prefetch(line);
    }
    /// The same for the text of the name, which can only be found once the rest is there.
    void FetchNameAhead() const {
        const char* const text = reinterpret_cast<const char*>(m_fullName.data());
        __builtin_prefetch(text);
        __builtin_prefetch(text + CacheLine);
    }

    /// Notes an item that stands at the head of its chain and has not been put in its place.
    void AddPendingItem(PathItemInfo* item) { m_pendingItems.push_back(item); }
    /// So that the next item can be noted without fail.
    void MakeRoomForPendingItem() { MakeRoom(m_pendingItems, 64); }
    void RemovePendingItem(const PathItemInfo* item) { std::erase(m_pendingItems, item); }
    bool HasPendingItems() const { return !m_pendingItems.empty(); }
    /// Puts all of them in their places. Chains are in path order afterwards.
    void PlacePendingItems();
    /// The same for every item of directories that have got other places on the path. In path order, which
    /// spares long walks.
    static void PlaceAllItems(const std::vector<PathDirItemInfo*>& directories);

  private:
    static constexpr std::size_t CacheLine = 64; // bytes

    /// The record's place in the index of full names.
    class FullNameEntry {
      public:
        explicit FullNameEntry(PathDirItemInfo& record);
        ~FullNameEntry();
        FullNameEntry(const FullNameEntry&) = delete;
        FullNameEntry& operator=(const FullNameEntry&) = delete;

      private:
        PathDirItemInfo& m_record;
    };

    void Prepare();
    void Enter(std::u16string_view leaf);
    bool ComputePreFrozen() const;

    std::int32_t m_order;
    std::vector<std::pair<const PathInfo*, std::int32_t>> m_positions;
    ustring m_fullName;
    /// In the storage layer's mode only.
    std::optional<foundation::storage::vfs::AbsoluteIRI> m_directoryIRI;
    std::optional<FullNameEntry> m_fullNameEntry;
    bool m_preFrozen = false;
    std::vector<PathItemInfo*> m_pendingItems;
    /// The name once more, for full names that are being built: a usual one lies here, so that no further
    /// page of memory is touched for it. The last field, since a check does not need it.
    boost::container::small_vector<char16_t, 64> m_nameAtHand;
};

PathDirItemInfo* PathItemInfo::GetPathDir() const {
    if (IsDirRecord())
        return static_cast<const PathAllDirItemInfo*>(this)->GetOwnPathDir();
    // A parent that is the one is not looked at: neighbours in a chain have different parents, and each would
    // have to be fetched.
    return IsDirectLeaf() ? static_cast<PathDirItemInfo*>(m_parent) : m_parent->GetOwnPathDir();
}
