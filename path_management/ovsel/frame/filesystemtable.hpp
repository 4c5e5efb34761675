#pragma once

#include <cstdint>
#include <deque>

#include "host_interfaces/ustring.hpp"

/// One drive or server on which directories of a path lie, with what change detection has met there.
struct FileSystemEntry {
    ustring name;
    std::int32_t m_handlesObtained = 0; ///< ever; releasing one does not count back
    std::int32_t m_handleFailures = 0;
    std::int32_t m_warnings = 0; ///< as rationing counts them
    std::uint32_t m_probeState = 0;
};

/// The file systems that a path has met. Row 0 is a header that nothing matches, row 1 takes directories
/// whose file system cannot be told; rows from 2 on are added as they are met and never go.
class FileSystemTable {
  public:
    static constexpr std::int32_t UnknownRow = 1;

    FileSystemTable();

    FileSystemEntry& operator[](int index) { return m_rows[static_cast<std::size_t>(index)]; }

    /// Row of the file system of that name, added if it is new.
    std::int32_t RowOf(const ustring& fileSystemName, bool caseSensitive);

    /// The drive or server that a name begins with; false, and an empty @p out, if there is none. By text
    /// alone: `C:abc\d` gives `C:abc`.
    static bool NameOf(ustring& out, const ustring& name);

  private:
    /// Rows are referred to while warnings go out, and whoever is warned may add directories.
    std::deque<FileSystemEntry> m_rows;
};
