#include "ovsel/lookup/pathitemiterators.hpp"

#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathwalk.hpp"

namespace Quorrant::ovsel {

PathItemInfo* SpecificDirIteratorImpl::Next(ItemKindMask mask) {
    for (; m_kind < DirChildGroupCount; ++m_kind, m_index = 0)
        if (HasBit(mask, m_kind))
            if (PathItemInfo* item = m_dir->GetItem(m_kind, m_index)) {
                ++m_index;
                return item;
            }
    return nullptr;
}

EntryIterator::EntryIterator(const IPathManager& manager, bool includeCWD)
    : m_manager(manager), m_entryIndex(includeCWD ? 0 : 1), m_entryCount(manager.GetPathEntryCount()) {}

PathItemInfo* EntryIterator::Next(ItemKindMask mask) {
    for (;;) {
        if (PathItemInfo* item = m_inner.Next(mask))
            return item;
        PathAllDirItemInfo* dir = NextDir();
        if (!dir)
            return nullptr;
        m_inner = SpecificDirIteratorImpl(ovDir(dir));
    }
}

PathAllDirItemInfo* PathDirIteratorImpl::NextDir() {
    PathDirItemInfo* entry = EntryFrom(m_manager, m_entryIndex);
    if (entry)
        m_entryIndex = entry->GetOrder() + 1;
    return entry;
}

PathAllDirItemInfo* MethodDirIteratorImpl::NextDir() {
    for (; m_entryIndex < m_entryCount; ++m_entryIndex, m_classIndex = 0) {
        const PathDirItemInfo* entry = m_manager.GetPathEntry(m_entryIndex);
        if (entry && m_classIndex < entry->GetClassDirs().size())
            return entry->GetClassDirs()[m_classIndex++];
    }
    return nullptr;
}

PathAllDirItemInfo* PrivateDirIteratorImpl::NextDir() {
    while (m_entryIndex < m_entryCount) {
        const PathDirItemInfo* entry = m_manager.GetPathEntry(m_entryIndex++);
        if (entry && entry->GetPrivateDir())
            return entry->GetPrivateDir();
    }
    return nullptr;
}

PathItemInfo* ConstructorIteratorImpl::Next(ItemKindMask mask) {
    if (!HasBit(mask, DirChildFile))
        return nullptr;
    for (; PathDirItemInfo* entry = EntryFrom(m_manager, m_entryIndex); m_classIndex = 0) {
        const ovDir held(entry);
        m_entryIndex = entry->GetOrder();
        while (m_classIndex < entry->GetClassDirs().size()) {
            const PathClassDirItemInfo* classDir = entry->GetClassDirs()[m_classIndex++];
            if (PathItemInfo* file = classDir->FindNextFile(nullptr, classDir->GetName(), m_caseSensitive))
                return file;
        }
        ++m_entryIndex;
    }
    return nullptr;
}

} // namespace Quorrant::ovsel
