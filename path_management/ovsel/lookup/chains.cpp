#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"

// Linking is constant time, so that reading a directory costs no ordering; the order is restored once for a
// whole directory, run by run. A run is all neighbours of one order number.

void PathItemInfo::LinkAtHead() {
    m_pathDir->MakeRoomForPendingItem();
    const NameCategory category = GetCategory();
    const PathNameInfo::Chain chain = m_nameInfo->GetEnds(category);
    // The last that may run out of memory.
    m_nameInfo->SetEnds(category, {this, chain.last ? chain.last : this});
    m_next = chain.first;
    if (m_next)
        m_next->m_prev = this;
    m_pathDir->AddPendingItem(this);
    m_pending = true;
}

void PathItemInfo::LinkAtHead(std::u16string_view name) {
    m_pathDir->MakeRoomForPendingItem(); // first, so that a new name entry does not stay without an item
    m_nameInfo = GetManager()->AddNameInfo(name, m_spelling);
    LinkAtHead();
}

void PathItemInfo::Unlink() {
    PathNameInfo::Chain chain = m_nameInfo->GetEnds(GetCategory());
    (m_prev ? m_prev->m_next : chain.first) = m_next;
    (m_next ? m_next->m_prev : chain.last) = m_prev;
    m_nameInfo->SetEnds(GetCategory(), chain);
    m_next = nullptr;
    m_prev = nullptr;
    m_linked = false;
    if (m_pending)
        m_pathDir->RemovePendingItem(this);
    m_pending = false;
}

void PathItemInfo::UnlinkFromNameInfo() {
    Unlink();
    if (m_nameInfo->HasNoItems())
        GetManager()->RemoveNameInfo(m_nameInfo);
}

void PathItemInfo::PlaceInChain() {
    // Not the orders are compared: a directory that is still being read may have that of another for a while.
    if (m_prev && m_prev->m_pathDir == m_pathDir) {
        m_pending &= m_prev->m_pending; // goes with the first of its run
        return;
    }
    const std::int32_t order = GetOrderNumber();
    PathItemInfo* last = this;
    for (; last->m_next && last->m_next->m_pathDir == m_pathDir; last = last->m_next)
        last->m_pending = false;
    last->m_pending = false;
    if (!m_prev && order == 0)
        return;
    PathItemInfo* const end = m_nameInfo->GetEnds(GetCategory()).last;
    // A directory that was added last has its place at the end, which may be far.
    const bool belongsLast = !end->m_pending && end->GetOrderNumber() < order;
    // Pending neighbours of other directories have no place yet; a callback may have added them meanwhile.
    PathItemInfo* left = belongsLast ? end : last;
    while (left->m_next && (left->m_next->m_pending || left->m_next->GetOrderNumber() < order))
        left = left->m_next;
    if (left != last) {
        MoveRun(last, left, left->m_next);
        return;
    }
    PathItemInfo* right = nullptr;
    for (PathItemInfo* item = m_prev; item; item = item->m_prev) {
        if (item->m_pending)
            continue;
        if (item->GetOrderNumber() <= order)
            break;
        right = item;
    }
    if (right)
        MoveRun(last, right->m_prev, right);
}

/// Takes the run from this item to @p last out of the chain and puts it between two neighbours, either of
/// which may be an end of the chain.
void PathItemInfo::MoveRun(PathItemInfo* last, PathItemInfo* left, PathItemInfo* right) {
    PathNameInfo::Chain chain = m_nameInfo->GetEnds(GetCategory());
    PathItemInfo* const before = m_prev;
    PathItemInfo* const after = last->m_next;
    (before ? before->m_next : chain.first) = after;
    (after ? after->m_prev : chain.last) = before;
    m_prev = left;
    last->m_next = right;
    (left ? left->m_next : chain.first) = this;
    (right ? right->m_prev : chain.last) = last;
    m_nameInfo->SetEnds(GetCategory(), chain);
}

template <class Visit>
void PathAllDirItemInfo::ForEachChained(Visit visit) {
    for (PathAllDirItemInfo* dir = this; dir; dir = dir->m_privateDir) {
        visit(*dir);
        for (PathFileItemInfo* file : dir->m_files)
            visit(*file);
        for (PathPackageDirItemInfo* package : dir->m_packageDirs)
            package->ForEachChained(visit);
        for (PathClassDirItemInfo* classDir : dir->m_classDirs)
            classDir->ForEachChained(visit);
        for (PathSubDirItemInfo* subDir : dir->m_subDirs)
            visit(*subDir);
        dir->ForEachLooseBelow([&](PathAllDirItemInfo& loose) { loose.ForEachChained(visit); });
    }
}

/// What stands in no list, or no longer, has no order of its own, and keeps no other from its place.
void PathDirItemInfo::PlacePendingItems() {
    if (GetPositionIn(GetManager()->GetPathInfo()) < 0)
        return;
    for (PathItemInfo* item : m_pendingItems)
        item->PlaceInChain();
    m_pendingItems = {}; // a directory is filled once; the room would stay for good
}

/// All of them lose their places before the first gets a new one: none that is still where the directory was
/// may be taken for one that is where it belongs.
void PathDirItemInfo::PlaceAllItems() {
    ForEachChained([](PathItemInfo& item) { item.m_pending = true; });
    ForEachChained([](PathItemInfo& item) { item.PlaceInChain(); });
    PlacePendingItems(); // also what is in no container yet
}
