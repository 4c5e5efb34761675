#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/frame/pathinfo.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/reading/changediagnostics.hpp"

namespace {

/// A host may read its events once at the beginning and answer every look from memory until the end.
class ChangeChecks {
  public:
    ChangeChecks() { host::Platform().BeginChangeChecks(); }
    ~ChangeChecks() { host::Platform().EndChangeChecks(); }
    ChangeChecks(const ChangeChecks&) = delete;
    ChangeChecks& operator=(const ChangeChecks&) = delete;
};

/// Visits children that a callback may take away meanwhile.
template <class Child, class Visit>
void ForEachChild(const std::vector<Child*>& children, Visit visit) {
    for (std::size_t i = 0; i < children.size(); ++i) {
        const ovDir held(children[i]);
        visit(*children[i]);
    }
}

} // namespace

RefreshOptions PathAllDirItemInfo::OptionsFor(ovDirRefreshType type, bool recursive) const {
    const bool freeze = GetManager()->GetFreezeAllAddedDirectories() || GetPathDir()->IsPreFrozen();
    return {type, freeze, recursive};
}

bool PathAllDirItemInfo::IsChanged() {
    switch (m_state) {
    case DirUnloaded:
    case DirChanged:
        return true;
    case DirFrozen:
        return false;
    default:
        return CheckChanged();
    }
}

/// @return whether anything was read again.
bool PathAllDirItemInfo::Refresh(const RefreshOptions& options) {
    const DirState before = m_state;
    const bool checks = options.type == ovRefreshCheck || options.type == 0;
    const bool wanted = checks ? before != DirFrozen && IsChanged()
                               : options.type == ovRefreshReloadFrozen ||
                                     (options.type == ovRefreshReload && before != DirFrozen);
    if (wanted)
        m_state = DirChanged;
    const bool reload = m_state == DirChanged;
    if (reload) {
        Reload(options);
        if (ChangeDiagnostics() || GetManager()->GetDirectoryReloadMessages())
            ReportMessage(MessageChannel::Info, "reloadDirCheck", {GetName()});
    }
    // A check does not go below a frozen directory; other types let the children decide for themselves.
    const bool descends = !(checks && before == DirFrozen);
    const bool below = options.recursive && descends && RefreshChildren(options);
    if (before == DirFrozen)
        m_state = DirFrozen;
    return reload || below;
}

bool PathAllDirItemInfo::RefreshChildren(const RefreshOptions& options) {
    bool any = false;
    const auto refresh = [&](PathAllDirItemInfo& child) { any = child.Refresh(options) || any; };
    ForEachChild(m_packageDirs, refresh);
    ForEachChild(m_classDirs, refresh);
    if (const ovDir held(m_privateDir); *held)
        refresh(**held);
    return any;
}

void PathAllDirItemInfo::RefreshDirectory(ovDirRefreshType type) {
    GetManager()->NotifyInterests(this, ovEventRefreshBegin);
    if (m_dirType != ovDirTypeNull && IsLinked()) {
        const ChangeChecks checks;
        Refresh(OptionsFor(type, false));
        GetPathDir()->PlacePendingItems();
    }
    GetManager()->NotifyInterests(this, ovEventRefreshEnd);
}

void PathAllDirItemInfo::RefreshTree(ovDirRefreshType type) {
    if (m_dirType == ovDirTypeNull)
        return;
    Refresh(OptionsFor(type, true));
    GetPathDir()->PlacePendingItems();
}

void PathInfo::RefreshAllDirectories(ovDirRefreshType type) {
    m_manager->NotifyInterests(m_manager->GetNullDir(), ovEventRefreshBegin);
    {
        const ChangeChecks checks;
        ForEachChild(m_entries, [&](PathDirItemInfo& entry) { entry.RefreshTree(type); });
    }
    m_manager->NotifyInterests(m_manager->GetNullDir(), ovEventRefreshEnd);
}

void PathInfo::SetAllChanged(DirState state) {
    for (PathDirItemInfo* entry : m_entries)
        if (entry)
            entry->SetChangeStateTree(state);
}

void PathAllDirItemInfo::SetChangeState(DirState state) {
    if (m_dirType != ovDirTypeNull && (m_state == DirLoaded || m_state == DirRecheck))
        m_state = state;
}

void PathAllDirItemInfo::SetChangeStateTree(DirState state) {
    SetChangeState(state);
    for (PathPackageDirItemInfo* package : m_packageDirs)
        package->SetChangeStateTree(state);
    for (PathClassDirItemInfo* classDir : m_classDirs)
        classDir->SetChangeStateTree(state);
    if (m_privateDir)
        m_privateDir->SetChangeState(state);
}

bool PathAllDirItemInfo::SetFrozen(bool freeze) {
    if (m_dirType == ovDirTypeNull || (freeze && GetDirType() == ovDirTypeCWD))
        return false;
    const ChangeChecks checks;
    return SetFrozenTree(freeze, OptionsFor(ovRefreshCheck, false));
}

bool PathAllDirItemInfo::SetFrozenTree(bool freeze, const RefreshOptions& options) {
    const bool was = IsFrozen();
    SetFrozenOne(freeze, options);
    const auto follow = [&](PathAllDirItemInfo& child) { child.SetFrozenTree(freeze, options); };
    ForEachChild(m_packageDirs, follow);
    ForEachChild(m_classDirs, follow);
    if (const ovDir held(m_privateDir); *held)
        held->SetFrozenOne(freeze, options);
    return was;
}

/// A directory goes into the freeze up to date, and comes out of it with what it knew.
void PathAllDirItemInfo::SetFrozenOne(bool freeze, const RefreshOptions& options) {
    if (freeze == IsFrozen())
        return;
    if (!freeze) {
        m_state = DirRecheck;
        StartChangeDetection(true);
        return;
    }
    if (m_state != DirLoaded) {
        Refresh(options);
        GetPathDir()->PlacePendingItems();
    }
    ReleaseNotification();
    m_state = DirFrozen;
}
