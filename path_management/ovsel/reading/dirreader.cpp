#include "ovsel/reading/dirreader.hpp"

#include <ovsel/cwd.hpp>

#include "host_interfaces/diagnostics.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/frame/messages.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace {

enum AttributeBit : unsigned short {
    AttributeClass = 0x0001,
    AttributeNoClass = 0x0002,
    AttributeDirectory = 0x4000,
    AttributeFile = 0x8000,
};

std::uint32_t FileKindOf(unsigned short word) {
    if (word & AttributeClass)
        return FileKindClass;
    return word & AttributeNoClass ? FileKindNoClass : FileKindUnknown;
}

} // namespace

DirReader::DirReader(IPathManager* manager, const ustring& dirName) : m_manager(manager), m_dirName(dirName) {
#ifndef NDEBUG
    if (IsVFSMode())
        HOST_FATAL("DirReader should not be used in non-VFS mode.\n");
#endif
    if (!IsHidden()) {
        unsigned short* attributes = nullptr;
        m_contents.reset(m_manager->ReadDirectory(m_dirName, &attributes));
        m_attributes.reset(attributes);
    }
    if (!m_contents)
        m_contents.reset(static_cast<char16_t*>(HostCalloc(1, sizeof(char16_t))));
    if (!m_contents)
        ReportMessage(MessageChannel::Error, "cannotConstructPathNoMemory");
    m_cursor = m_contents.get();
}

bool DirReader::IsHidden() const {
    return m_manager->IsCWDHidden() && m_manager->FindPathDir(m_dirName, DirScope::CWD) &&
           !ovIsCWDOnPath(ovPath(m_manager));
}

void DirReader::First() {
    m_cursor = m_contents.get();
    m_index = 0;
    m_atEnd = !m_cursor || *m_cursor == 0;
    if (!m_atEnd)
        Settle();
}

void DirReader::Next() {
    m_cursor += m_item.name.size() + 1;
    ++m_index;
    Settle();
}

/// Takes the next name that does not begin with a dot.
void DirReader::Settle() {
    std::u16string_view name(m_cursor);
    while (!name.empty() && name.front() == u'.') {
        m_cursor += name.size() + 1;
        ++m_index;
        name = m_cursor;
    }
    m_item.name = name;
    m_atEnd = name.empty();
    Classify();
}

void DirReader::Classify() {
    m_item.kind = DirItemUnknown;
    m_item.confirmed = true;
    m_item.fileKind = FileKindUnknown;
    if (m_atEnd)
        return;
    if (m_attributes)
        ClassifyByAttributes(m_attributes[m_index]);
    if (m_item.kind == DirItemUnknown) {
        m_item.kind = ClassifyDirEntryName(m_item.name);
        if (m_item.kind ==
            DirItemSubdir) // a plain name of which nothing is known: a file until somebody asks
            m_item = {m_item.name, DirItemFile, false, FileKindUnknown};
    }
    if (m_item.kind == DirItemSubdir || m_item.kind == DirItemFile)
        return;
    ustring fullName = m_dirName;
    AppendElement(fullName, m_item.name);
    if (!m_manager->DirExists(fullName))
        m_item = {m_item.name, DirItemFile, false, FileKindUnknown};
}

void DirReader::ClassifyByAttributes(unsigned short word) {
    if (word & AttributeDirectory) {
        m_item.kind = ClassifyDirEntryName(m_item.name);
    } else if (word & AttributeFile) {
        m_item.kind = DirItemFile;
        m_item.fileKind = FileKindOf(word);
    }
}
