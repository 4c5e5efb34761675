#include "ovsel/reading/reloadindex.hpp"

#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"

namespace {

std::size_t HashOf(std::u16string_view stem, std::u16string_view extension) {
    return MixBits(HashUnits(stem) + HashUnits(extension));
}

} // namespace

ReloadIndex::ReloadIndex(const PathAllDirItemInfo& dir) : m_dir(dir), m_removals(dir.GetRemovals()) {
    Fill();
}

std::u16string_view ReloadIndex::Name::operator()(const PathItemInfo* item) const { return item->GetName(); }

std::size_t ReloadIndex::FileHash::operator()(std::u16string_view diskName) const {
    const std::size_t dot = diskName.rfind(u'.');
    return dot == std::u16string_view::npos ? HashUnits(diskName)
                                            : HashOf(diskName.substr(0, dot), diskName.substr(dot + 1));
}

std::size_t ReloadIndex::FileHash::operator()(const PathFileItemInfo* file) const {
    const char16_t* extension = file->GetExtension();
    return extension ? HashOf(file->GetName(), extension) : HashUnits(file->GetName());
}

bool ReloadIndex::FileEqual::operator()(const PathFileItemInfo* a, const PathFileItemInfo* b) const {
    const char16_t* left = a->GetExtension();
    const char16_t* right = b->GetExtension();
    if (!left || !right)
        return !left && !right && a->GetName() == b->GetName();
    return a->GetName() == b->GetName() && std::u16string_view(left) == right;
}

bool ReloadIndex::FileEqual::operator()(std::u16string_view diskName, const PathFileItemInfo* file) const {
    return file->MatchesDiskName(diskName);
}

void ReloadIndex::Fill() {
    // A set keeps the first of equals.
    m_files.reserve(m_dir.GetFiles().size());
    m_files.insert(m_dir.GetFiles().begin(), m_dir.GetFiles().end());
    m_classDirs.insert(m_dir.GetClassDirs().begin(), m_dir.GetClassDirs().end());
    m_packageDirs.insert(m_dir.GetPackageDirs().begin(), m_dir.GetPackageDirs().end());
    m_subDirs.insert(m_dir.GetSubDirs().begin(), m_dir.GetSubDirs().end());
}

bool ReloadIndex::IsOutdated() const { return m_removals != m_dir.GetRemovals(); }

void ReloadIndex::RefillIfOutdated() {
    if (!IsOutdated())
        return;
    m_removals = m_dir.GetRemovals();
    m_files.clear();
    m_classDirs.clear();
    m_packageDirs.clear();
    m_subDirs.clear();
    Fill();
}

namespace {

template <class Set>
auto Probe(const Set& set, std::u16string_view name) -> typename Set::value_type {
    const auto found = set.find(name);
    return found == set.end() ? nullptr : *found;
}

} // namespace

PathFileItemInfo* ReloadIndex::FindFile(std::u16string_view diskName) {
    RefillIfOutdated();
    return Probe(m_files, diskName);
}

PathClassDirItemInfo* ReloadIndex::FindClassDir(std::u16string_view name) {
    RefillIfOutdated();
    return Probe(m_classDirs, name);
}

PathPackageDirItemInfo* ReloadIndex::FindPackageDir(std::u16string_view name) {
    RefillIfOutdated();
    return Probe(m_packageDirs, name);
}

PathSubDirItemInfo* ReloadIndex::FindSubDir(std::u16string_view name) {
    RefillIfOutdated();
    return Probe(m_subDirs, name);
}
