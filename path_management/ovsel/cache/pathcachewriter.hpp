#pragma once

#include <cstdint>
#include <ostream>

#include <ovsel/handles.hpp>

#include "host_interfaces/text.hpp"

namespace Quorrant::ovsel {

/// Writes what the frozen directories of a path contain as a cache file.
///
/// The format, a line for each directory, its end, and each entry, indented by depth:
/// @code
/// <Quorrant type="Path Cache File" version="1.2" date="Mon Jan 05 09:00:00 2026">
///  <D name="stats">
///   <D name="stats/+fit">
///    <F name="line.sv"/>
///   </D>
///   <F name="mean.sv"/>
///   <d name="data"/>
///  </D>
/// </Quorrant>
/// @endcode
/// Directories stand under their name from the prefix on, entries under their bare name; nothing is escaped.
class PathCacheWriter {
  public:
    /// @p stream outlives the writer; @p date is written as it is.
    PathCacheWriter(ovPath path, std::ostream& stream, ustring date);

    /// The whole file. @throws what the stream and the conversion to UTF-8 throw.
    /// @pre nothing that the stream calls changes the path.
    void Write();

  private:
    bool IsWritten(const ovDir& dir) const;
    void WriteDirectory(const ovDir& dir);
    void WriteChildren(const ovDir& dir);
    void WriteFiles(const ovDir& dir);
    void Indent();

    ovPath m_path;
    std::ostream& m_stream;
    ustring m_date;
    fl::i18n::codecvt_ustring_to_string m_converter;
    ustring m_frozenPrefix; ///< with a separator, or empty
    std::size_t m_frozenPrefixLength;
    int m_depth = 0;
};

} // namespace Quorrant::ovsel
