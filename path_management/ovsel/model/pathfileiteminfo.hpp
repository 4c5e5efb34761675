#pragma once

#include "ovsel/model/fileextension.hpp"
#include "ovsel/model/pathiteminfo.hpp"

/// What a file is as a class definition.
enum FileKind : std::uint32_t { FileKindUnknown = 0, FileKindClass = 1, FileKindNoClass = 2 };

/// A file. Its name is its stem, so that `foo.sv` and `foo.p` share a name entry and differ in extension
/// only.
class PathFileItemInfo final : public PathItemInfo {
  public:
    /// @p diskName is the whole name that @p itemName is the stem of. @p confirmed false: only assumed to be
    /// a file.
    PathFileItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view itemName,
                     std::u16string_view diskName, bool confirmed, std::uint32_t fileKind);

    static void* operator new(std::size_t size, IPathManager* manager);
    static void operator delete(void* block);
    /// Of one whose construction fails.
    static void operator delete(void* block, IPathManager*) { operator delete(block); }

    void AppendName(ustring& path) const override;
    bool MatchesDiskName(std::u16string_view name) const override;
    /// The extension without its dot, empty if the name ends in a dot, null if it has none.
    const char16_t* GetExtension() const override { return m_extension.Get(); }

    std::uint32_t GetFileKind() const { return m_fileKind; }
    void SetFileKind(std::uint32_t fileKind) { m_fileKind = fileKind & 3u; }

    /// Ends the record. @pre its parent's container no longer holds it.
    void Remove();
    /// Takes the record out of its parent and ends it.
    void RemoveFromParent();
    /// The file has turned out to be a directory: enters that in the parent and ends this record.
    void ConvertToSubDir();

  private:
    FileExtension m_extension;
};

// Every file on a path has one of these, which fits into one line of the processor's caches; see
// bench/README.md for bytes per file.
static_assert(sizeof(PathFileItemInfo) <= 64);
