#include <utility>

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
    m_pathDir->AddPendingItem(this); // first, since it may run out of memory
    m_pending = true;
    const NameCategory category = GetCategory();
    m_next = m_nameInfo->GetChain(category);
    m_prev = m_next ? std::exchange(m_next->m_prev, this) : this;
    m_nameInfo->SetChain(category, this);
}

/// @return the head of the chain that is left.
PathItemInfo* PathItemInfo::Unlink() {
    PathItemInfo* head = m_nameInfo->GetChain(GetCategory());
    if (head == this)
        head = m_next;
    else
        m_prev->m_next = m_next;
    if (m_next)
        m_next->m_prev = m_prev;
    else if (head)
        head->m_prev = m_prev;
    m_next = nullptr;
    m_prev = nullptr;
    m_linked = false;
    if (m_pending)
        m_pathDir->RemovePendingItem(this);
    m_pending = false;
    return head;
}

void PathItemInfo::UnlinkFromNameInfo() {
    m_nameInfo->SetChain(GetCategory(), Unlink());
    if (m_nameInfo->HasNoItems())
        GetManager()->RemoveNameInfo(m_nameInfo);
}

void PathItemInfo::PlaceInChain() {
    if (m_prev == this)
        return; // alone
    const std::int32_t order = GetOrderNumber();
    PathItemInfo* const before = GetPrev();
    const std::int32_t previous = before ? before->GetOrderNumber() : 0;
    if (order == previous)
        return;
    PathItemInfo* last = this;
    while (last->m_next && last->m_next->GetOrderNumber() == order)
        last = last->m_next;
    PathItemInfo* const left = FindPlaceBehind(last, order);
    if (left != last) {
        MoveRun(last, left, left->m_next);
    } else if (before && order < previous) {
        PathItemInfo* right = before;
        while (right->GetPrev() && right->m_prev->GetOrderNumber() > order)
            right = right->m_prev;
        MoveRun(last, right->GetPrev(), right);
    }
}

/// The item behind which the run that ends with @p last belongs; @p last if nothing behind it is in front of
/// that place. Directories come mostly at the end of the path, and so do their items in a chain.
PathItemInfo* PathItemInfo::FindPlaceBehind(PathItemInfo* last, std::int32_t order) const {
    PathItemInfo* const tail = m_nameInfo->GetChain(GetCategory())->m_prev;
    if (!tail->m_pending && tail->GetOrderNumber() < order)
        return tail;
    // Pending neighbours of other directories have no place yet; a callback may have added them meanwhile.
    PathItemInfo* left = last;
    while (left->m_next && (left->m_next->m_pending || left->m_next->GetOrderNumber() < order))
        left = left->m_next;
    return left;
}

/// Takes the run from this item to @p last out of the chain and puts it between two neighbours, one of which
/// may be missing, at an end of the chain.
void PathItemInfo::MoveRun(PathItemInfo* last, PathItemInfo* left, PathItemInfo* right) {
    PathItemInfo* const before = GetPrev();
    PathItemInfo* const after = last->m_next;
    PathItemInfo* rest = before ? m_nameInfo->GetChain(GetCategory()) : after; // its head; there are others
    if (before)
        before->m_next = after;
    (after ? after : rest)->m_prev = m_prev;

    m_prev = left ? left : rest->m_prev;
    last->m_next = right;
    if (left)
        left->m_next = this;
    else
        rest = this;
    (right ? right : rest)->m_prev = last;
    m_nameInfo->SetChain(GetCategory(), rest);
}

void PathDirItemInfo::PlacePendingItems() {
    for (PathItemInfo* item : m_pendingItems) {
        item->PlaceInChain();
        item->m_pending = false;
    }
    m_pendingItems = {}; // a directory is filled once; the room would stay for good
}

void PathAllDirItemInfo::PlaceAllItems() {
    for (PathAllDirItemInfo* dir = this; dir; dir = dir->m_privateDir) {
        dir->PlaceInChain();
        for (PathFileItemInfo* file : dir->m_files)
            file->PlaceInChain();
        for (PathPackageDirItemInfo* package : dir->m_packageDirs)
            package->PlaceAllItems();
        for (PathClassDirItemInfo* classDir : dir->m_classDirs)
            classDir->PlaceAllItems();
        for (PathSubDirItemInfo* subDir : dir->m_subDirs)
            subDir->PlaceInChain();
    }
}
