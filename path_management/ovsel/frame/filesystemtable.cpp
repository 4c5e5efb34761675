#include "ovsel/frame/filesystemtable.hpp"

#include <algorithm>

#include "ovsel/names/nameequality.hpp"

FileSystemTable::FileSystemTable() : m_rows(2) {
    m_rows[0].name = u"File System Array Header";
    m_rows[UnknownRow].name = u"Unknown File System";
}

std::int32_t FileSystemTable::RowOf(const ustring& fileSystemName, bool caseSensitive) {
    const auto found = std::find_if(m_rows.begin() + 2, m_rows.end(), [&](const FileSystemEntry& row) {
        return NamesEqual(row.name, fileSystemName, caseSensitive);
    });
    const auto index = found - m_rows.begin();
    if (found == m_rows.end()) {
        FileSystemEntry row;
        row.name = fileSystemName;
        m_rows.push_back(std::move(row));
    }
    return static_cast<std::int32_t>(index);
}

bool FileSystemTable::NameOf(ustring& out, const ustring& name) {
    out.clear();
    if (name.size() < 3)
        return false;
    const std::size_t separator = name.find(u'\\', 2);
    if (name.starts_with(u"\\\\"))
        out = name.substr(0, separator);
    else if (name[1] == u':')
        out = name.substr(0, separator == ustring::npos ? 2 : separator);
    return !out.empty();
}
