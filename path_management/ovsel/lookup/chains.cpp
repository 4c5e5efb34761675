#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"

// Linking is constant time, so that reading a directory costs no ordering; the order is restored once for a
// whole directory, run by run. A run is all neighbours of one path directory.

void PathItemInfo::LinkAtHead() {
    GetPathDir()->MakeRoomForPendingItem();
    const NameCategory category = GetCategory();
    const PathNameInfo::Chain chain = m_nameInfo->GetEnds(category);
    // The last that may run out of memory.
    m_nameInfo->SetEnds(category, {this, chain.last ? chain.last : this});
    m_next = chain.first;
    if (m_next)
        m_next->m_prev = this;
    GetPathDir()->AddPendingItem(this);
    m_pending = true;
}

void PathItemInfo::LinkAtHead(std::u16string_view name) {
    GetPathDir()->MakeRoomForPendingItem(); // first, so that a new name entry does not stay without an item
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
        GetPathDir()->RemovePendingItem(this);
    m_pending = false;
}

void PathItemInfo::UnlinkFromNameInfo() {
    Unlink();
    if (m_nameInfo->HasNoItems())
        GetManager()->RemoveNameInfo(m_nameInfo);
}

void PathItemInfo::PlaceInChain() {
    if (!m_pending)
        return;               // went with another of its run
    if (!m_prev && !m_next) { // alone, as nearly all are
        m_pending = false;
        return;
    }
    const Run run = TakeRun();
    const std::int32_t order = GetOrderNumber();
    if (!run.first->m_prev && order == 0)
        return;
    PathItemInfo* const left = FindLeftOf(run, order);
    if (left != run.last)
        MoveRun(run, left, left->m_next);
    else if (PathItemInfo* const right = FindRightOf(run, order))
        MoveRun(run, right->m_prev, right);
}

/// The neighbours of one path directory, none of which is pending any more. Not the orders are compared: a
/// directory that is still being read may have that of another for a while.
PathItemInfo::Run PathItemInfo::TakeRun() {
    const PathDirItemInfo* const pathDir = GetPathDir();
    Run run{this, this};
    while (run.first->m_prev && run.first->m_prev->GetPathDir() == pathDir)
        run.first = run.first->m_prev;
    for (run.last = run.first; run.last->m_next && run.last->m_next->GetPathDir() == pathDir;
         run.last = run.last->m_next)
        run.last->m_pending = false;
    run.last->m_pending = false;
    return run;
}

// Pending neighbours of other directories have no place yet; a callback may have added them meanwhile.

/// The item behind which the run has to go; its own last one if that is where it is, or too far back.
PathItemInfo* PathItemInfo::FindLeftOf(const Run& run, std::int32_t order) const {
    PathItemInfo* const end = m_nameInfo->GetEnds(GetCategory()).last;
    // A directory that was added last has its place at the end, which may be far.
    const bool belongsLast = !end->m_pending && end->GetOrderNumber() < order;
    PathItemInfo* left = belongsLast ? end : run.last;
    while (left->m_next && (left->m_next->m_pending || left->m_next->GetOrderNumber() < order))
        left = left->m_next;
    return left;
}

/// The first item in front of the run that has to come behind it, or null.
PathItemInfo* PathItemInfo::FindRightOf(const Run& run, std::int32_t order) {
    PathItemInfo* right = nullptr;
    for (PathItemInfo* item = run.first->m_prev; item; item = item->m_prev) {
        if (item->m_pending)
            continue;
        if (item->GetOrderNumber() < order)
            break;
        right = item;
    }
    return right;
}

/// Takes the run out of the chain and puts it between two neighbours, either of which may be an end of the
/// chain.
void PathItemInfo::MoveRun(const Run& run, PathItemInfo* left, PathItemInfo* right) {
    PathNameInfo::Chain chain = m_nameInfo->GetEnds(GetCategory());
    PathItemInfo* const before = run.first->m_prev;
    PathItemInfo* const after = run.last->m_next;
    (before ? before->m_next : chain.first) = after;
    (after ? after->m_prev : chain.last) = before;
    run.first->m_prev = left;
    run.last->m_next = right;
    (left ? left->m_next : chain.first) = run.first;
    (right ? right->m_prev : chain.last) = run.last;
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
    if (m_pendingItems.empty() || GetPositionIn(GetManager()->GetPathInfo()) < 0)
        return;
    for (PathItemInfo* item : m_pendingItems)
        item->PlaceInChain();
    // With its room, which an assigned {} would leave: a directory is filled once.
    std::vector<PathItemInfo*>().swap(m_pendingItems);
}

/// All of them lose their places before the first gets a new one: none that is still where its directory was
/// may be taken for one that is where it belongs.
void PathDirItemInfo::PlaceAllItems(const std::vector<PathDirItemInfo*>& directories) {
    for (PathDirItemInfo* directory : directories)
        directory->ForEachChained([](PathItemInfo& item) { item.m_pending = true; });
    for (PathDirItemInfo* directory : directories) {
        directory->ForEachChained([](PathItemInfo& item) { item.PlaceInChain(); });
        directory->PlacePendingItems(); // also what is in no container yet
    }
}
