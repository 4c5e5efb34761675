#pragma once

#include <cstdint>
#include <string_view>

#include "host_interfaces/storage.hpp"
#include "host_interfaces/ustring.hpp"
#include "ovsel/model/namecategory.hpp"

class IPathManager;
class PathAllDirItemInfo;
class PathDirItemInfo;
class PathNameInfo;

/// What an item record is.
enum class ItemClass : std::uint32_t { File, SubDir, PathDir, PackageDir, ClassDir, PrivateDir };

/// The record of one thing that a directory holds, or of a path directory itself.
///
/// It stands in three structures at once: its parent's container, which owns it; the name entry that holds
/// its spelling; and one chain in that entry. It holds no text of its own.
///
/// Life: built and linked by the constructor of its class; removed by its owner, which takes it out of the
/// container, unlinks it and calls DeleteIfUnreferenced; kept as a shell, of which only IsLinked and the
/// count may be asked, until the last handle goes.
class PathItemInfo {
  public:
    /// Of an item whose construction fails before it is linked, the name entry goes too if it was made for
    /// it.
    virtual ~PathItemInfo();
    PathItemInfo(const PathItemInfo&) = delete;
    PathItemInfo& operator=(const PathItemInfo&) = delete;

    /// Appends the name that the item has on disk to a path that is being built.
    virtual void AppendName(ustring& path) const;
    /// Is this exactly the item's name on disk? Never a matter of case.
    virtual bool MatchesDiskName(std::u16string_view name) const;
    /// The text from the name's last dot on, dot included; null without a dot. Files answer without the dot.
    virtual const char16_t* GetExtension() const;

    /// NUL-terminated; empty for a record without a name.
    std::u16string_view GetName() const;
    /// Replaces @p out by the absolute name on disk.
    void GetFullName(ustring& out) const;
    /// The same for a reader: of a path-level record the name that it holds, of others built in @p room.
    const ustring& ReadFullName(ustring& room) const;
    /// @pre the storage layer's mode
    foundation::storage::vfs::AbsoluteIRI GetAbsoluteIRI() const;

    PathAllDirItemInfo* GetParent() const { return m_parent; }
    /// The path directory under which the item lies, which may be the item itself. Defined with
    /// PathDirItemInfo.
    inline PathDirItemInfo* GetPathDir() const;
    PathNameInfo* GetNameInfo() const { return m_nameInfo; }
    IPathManager* GetManager() const;
    PathItemInfo* GetNext() const { return m_next; }
    PathItemInfo* GetPrev() const { return m_prev; }

    bool IsLinked() const { return m_linked; }
    /// Is it a file or a plain sub-directory that lies in a path directory itself?
    bool IsDirectLeaf() const { return m_category == NameFile || m_category == NameSubDir; }
    bool IsStale() const { return m_stale; }
    void SetStale(bool stale) { m_stale = stale; }
    bool IsVerified() const { return m_verified; }
    void SetVerified(bool verified) { m_verified = verified; }

    ItemClass GetItemClass() const { return classOf[m_category]; }
    bool IsFile() const { return GetItemClass() == ItemClass::File; }
    bool IsSubDir() const { return GetItemClass() == ItemClass::SubDir; }
    /// Is this a PathAllDirItemInfo?
    bool IsDirRecord() const { return GetItemClass() >= ItemClass::PathDir; }
    bool IsPathDir() const { return GetItemClass() == ItemClass::PathDir; }
    NameCategory GetCategory() const { return static_cast<NameCategory>(m_category); }

    /// Position on the path of the directory that the item lies under; 0 if there is none.
    std::int32_t GetOrderNumber() const;

    std::int32_t GetRefCount() const { return m_refCount; }
    void AddRef() { ++m_refCount; }
    /// May delete the object.
    void Release();
    /// The end of every removal, after the unlink.
    void DeleteIfUnreferenced();

    // The chain operations stand with the name index.

    /// Makes the item the head of its chain and notes it as pending; the last step of construction, since
    /// only an item that is whole can be unlinked again.
    void LinkAtHead();
    /// Of an item that is pending: moves the run in which it stands to where the path directory's order
    /// number belongs in the chain, which is sorted but for what is pending. A new run goes in front of items
    /// of equal order.
    void PlaceInChain();
    /// Takes the item out of its chain; a name entry whose last item this was goes too.
    void UnlinkFromNameInfo();
    /// The same for an item that a search has come upon: it still knows what was next, for others that stand
    /// at it.
    void UnlinkKeepingNext() {
        PathItemInfo* const next = m_next;
        UnlinkFromNameInfo();
        m_next = next;
    }

  protected:
    /// @p parent is null for path-level records, which get their name entry when they are linked.
    PathItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name, bool verified,
                 ItemClass itemClass);

    /// Links a path-level record under the name.
    void LinkAtHead(std::u16string_view name);
    /// For a record that is in no chain.
    void MarkUnlinked() { m_linked = false; }

  private:
    friend class PathDirItemInfo;

    /// By NameCategory.
    static constexpr ItemClass classOf[NameCategoryCount] = {
        ItemClass::File,       ItemClass::File,       ItemClass::File,     ItemClass::SubDir,
        ItemClass::PrivateDir, ItemClass::PackageDir, ItemClass::ClassDir, ItemClass::SubDir,
        ItemClass::PackageDir, ItemClass::ClassDir,   ItemClass::PathDir};

    void AppendFullName(ustring& out) const;
    void Unlink();

    struct Run {
        PathItemInfo* first;
        PathItemInfo* last;
    };
    Run TakeRun();
    PathItemInfo* FindLeftOf(const Run& run, std::int32_t order) const;
    static PathItemInfo* FindRightOf(const Run& run, std::int32_t order);
    void MoveRun(const Run& run, PathItemInfo* left, PathItemInfo* right);

    // Pointers first: a file's extension then fits behind the last field, in the same block.
    PathItemInfo* m_next = nullptr;
    PathItemInfo* m_prev = nullptr;
    PathAllDirItemInfo* m_parent;
    PathNameInfo* m_nameInfo = nullptr;
    std::int32_t m_refCount = 0;
    std::int32_t m_spelling = 0;
    // Whole bytes: to set bits next to others, the processor would wait for the memory of a record that is
    // only being made.
    bool m_linked = true;
    bool m_stale = false;
    bool m_verified;
    bool m_pending = false;        ///< in m_pendingItems of the path directory
    const std::uint8_t m_category; ///< a NameCategory

  protected:
    std::uint8_t m_fileKind = 0; ///< belongs to files; stands here where there is room for it
};
