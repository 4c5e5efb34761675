#include "ovsel/cache/pathtoolboxcachediritemsiterator.hpp"

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/filesystem.hpp"

namespace Quorrant::ovsel {

namespace {

constexpr int StageCount = 5;

} // namespace

void PathToolboxCacheDirItemsIterator::First() {
    m_listIndex = 0;
    m_stage = 0;
    m_atEnd = false;
    m_specialNames = SpecialNames(true);
    SeekCurrentItem();
}

void PathToolboxCacheDirItemsIterator::Next() {
    ++m_listIndex;
    SeekCurrentItem();
}

void PathToolboxCacheDirItemsIterator::SeekCurrentItem() {
    for (; m_stage < StageCount; ++m_stage, m_listIndex = 0)
        for (const std::vector<ustring>& list = CurrentList(); m_listIndex < list.size(); ++m_listIndex) {
            m_item = ItemOf(list[m_listIndex]);
            if (!IsPassedOver(m_item))
                return;
        }
    m_atEnd = true;
}

bool PathToolboxCacheDirItemsIterator::IsPassedOver(const DirItemInfo& item) {
    return item.name.empty() || (m_stage == 0 && m_specialNames.IsRepeated(item.name));
}

const std::vector<ustring>& PathToolboxCacheDirItemsIterator::CurrentList() const {
    switch (m_stage) {
    case 0:
        return m_contents->subdirs;
    case 1:
        return m_contents->files;
    case 2:
        return m_contents->classFiles;
    case 3:
        return m_contents->noClassFiles;
    case 4:
        return m_contents->unconfirmed;
    default:
        HOST_FATAL("Should not reach here ");
    }
}

DirItemInfo PathToolboxCacheDirItemsIterator::ItemOf(const ustring& entry) {
    if (m_stage > 0)
        return {entry, DirItemFile, m_stage != 4, m_stage == 2 ? 1U : m_stage == 3 ? 2U : 0U};
    // A nested directory stands under its name from the prefix on, a plain one under its bare name.
    m_subdirName = fl::filesystem::extract_stem(fl::filesystem::make_native_form(entry, true));
    return {m_subdirName, ClassifyDirEntryName(m_subdirName), true, 0};
}

} // namespace Quorrant::ovsel
