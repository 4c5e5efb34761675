#include <algorithm>
#include <exception>
#include <iterator>

#include "ovsel/frame/eventbracket.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/frame/pathinfo.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/reading/changediagnostics.hpp"
#include "ovsel/reading/watchtable.hpp"

namespace {

/// A host may read its events once at the beginning and answer every look from memory until the end. A
/// callback may refresh in the middle of a refresh: the host is told of the outermost.
class ChangeChecks {
  public:
    ChangeChecks() {
        if (Depth() == 0)
            host::Platform().BeginChangeChecks();
        ++Depth();
    }
    ~ChangeChecks() {
        host::Platform().EndNeighbours(); // of an inner refresh too: whoever was called back goes on
        if (--Depth() == 0)
            host::Platform().EndChangeChecks();
    }
    ChangeChecks(const ChangeChecks&) = delete;
    ChangeChecks& operator=(const ChangeChecks&) = delete;

  private:
    /// Paths live on threads of their own.
    static int& Depth() {
        static thread_local int depth = 0;
        return depth;
    }
};

bool IsCheck(ovDirRefreshType type) { return type == ovRefreshCheck || type == 0; }

/// Need a check look only at directories whose handles speak? Not while one is read, which has to hear that a
/// refresh came by; and diagnostics tell of each that is asked.
bool LooksAtNewsOnly(const IPathManager& manager, ovDirRefreshType type) {
    return IsCheck(type) && manager.IsSettled() && !manager.IsReading() && !ChangeDiagnostics();
}

/// What a hook ends in the middle does not leave the path settled.
class UnsettledByThrow {
  public:
    explicit UnsettledByThrow(IPathManager* manager) : m_manager(manager) {}
    ~UnsettledByThrow() {
        if (std::uncaught_exceptions() > m_exceptions)
            m_manager->SetSettled(false);
    }
    UnsettledByThrow(const UnsettledByThrow&) = delete;
    UnsettledByThrow& operator=(const UnsettledByThrow&) = delete;

  private:
    IPathManager* const m_manager;
    const int m_exceptions = std::uncaught_exceptions();
};

/// Puts the new items of a path directory in their places at the end, also when a hook throws.
class Placing {
  public:
    explicit Placing(PathDirItemInfo* pathDir) : m_pathDir(pathDir), m_held(pathDir) {}
    ~Placing() { m_pathDir->PlacePendingItems(); }
    Placing(const Placing&) = delete;
    Placing& operator=(const Placing&) = delete;

  private:
    PathDirItemInfo* const m_pathDir;
    const ovDir m_held;
};

/// Gives a directory back the state that it has to keep, also when a hook throws.
class KeptFrozen {
  public:
    explicit KeptFrozen(DirState& state) : m_state(state), m_wasFrozen(state == DirFrozen) {}
    ~KeptFrozen() {
        if (m_wasFrozen)
            m_state = DirFrozen;
    }
    KeptFrozen(const KeptFrozen&) = delete;
    KeptFrozen& operator=(const KeptFrozen&) = delete;

    /// The state as it is now is the one to keep.
    void LetGo() { m_wasFrozen = false; }

  private:
    DirState& m_state;
    bool m_wasFrozen;
};

/// Visits the children that there are now and that no callback has taken away when their turn comes.
template <class Child, class Visit>
void ForEachChild(const std::vector<Child*>& children, Visit visit) {
    if (children.empty())
        return;
    const std::vector<ovDir> held(children.begin(), children.end());
    for (const ovDir& child : held)
        if (*child && child->IsLinked())
            visit(static_cast<Child&>(**child));
}

/// The same for all directories of a path. A question to the disk ends the processor's own looking ahead, and
/// thousands of records do not lie in its caches, so what the next visits touch is fetched during this one.
template <class Visit>
void ForEachEntry(const std::vector<PathDirItemInfo*>& entries, Visit visit) {
    const std::vector<ovDir> held(entries.begin(), entries.end());
    const auto entry = [&held](std::size_t at) {
        return at < held.size() ? static_cast<PathDirItemInfo*>(*held[at]) : nullptr;
    };
    for (std::size_t i = 0; i < held.size(); ++i) {
        if (const PathDirItemInfo* afterNext = entry(i + 2))
            afterNext->FetchAhead();
        if (const PathDirItemInfo* next = entry(i + 1))
            next->FetchNameAhead();
        if (PathDirItemInfo* const current = entry(i); current && current->IsLinked())
            visit(*current);
    }
}

/// What of @p entries is among @p present too, in their order. Looks at none, since the others may have gone.
std::vector<PathDirItemInfo*> ThoseStillAmong(std::vector<PathDirItemInfo*> present,
                                              std::vector<PathDirItemInfo*> entries) {
    std::sort(present.begin(), present.end());
    std::erase_if(entries, [&present](const PathDirItemInfo* entry) {
        return !std::binary_search(present.begin(), present.end(), entry);
    });
    return entries;
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

/// Would a check do nothing but ask the handle, or not even that?
bool PathAllDirItemInfo::IsSettled() const {
    return m_state == DirFrozen || (m_state == DirLoaded && m_refreshPolicy > ovRefreshByTimeStamp);
}

/// Does a check of the path come to this directory? It does not go below one that is frozen.
bool PathAllDirItemInfo::IsAskedForNews() const {
    const PathAllDirItemInfo* dir = this;
    while (dir && dir->m_state != DirFrozen)
        dir = dir->GetParent();
    return !dir && GetPathDir()->GetPositionIn(GetManager()->GetPathInfo()) >= 0;
}

/// The path directories in or below which a handle says anything, in path order. Handles are only asked, so
/// nobody is told of anything meanwhile.
std::vector<PathDirItemInfo*> PathInfo::FindEntriesWithNews() const {
    std::vector<PathDirItemInfo*> speaking;
    host::IPlatform& platform = host::Platform();
    for (const auto& [handle, directory] : m_manager->GetWatches())
        if (platform.WaitForSingleObject(handle, 0) != host::WaitTimeout && directory->IsAskedForNews())
            speaking.push_back(directory->GetPathDir());
    const auto order = [](const PathDirItemInfo* entry) { return entry->GetOrder(); };
    std::ranges::sort(speaking, {}, order);
    speaking.erase(std::unique(speaking.begin(), speaking.end()), speaking.end());
    return speaking;
}

/// @return whether anything was read again.
bool PathAllDirItemInfo::Refresh(const RefreshOptions& options) {
    if (m_beingDestroyed)
        return false;
    if (m_reading) {
        m_refreshAskedMeanwhile = true;
        GetManager()->SetSettled(false);
        return false;
    }
    const DirState before = m_state;
    const KeptFrozen kept(m_state);
    const bool checks = IsCheck(options.type);
    const bool wanted = checks ? before != DirFrozen && IsChanged()
                               : options.type == ovRefreshReloadFrozen ||
                                     (options.type == ovRefreshReload && before != DirFrozen);
    if (wanted) {
        if (before == DirUnloaded) // a hook threw in its first reading, which did not come to that
            StartChangeDetection(!options.freeze);
        m_state = DirChanged;
    }
    if (!IsLinked())
        return false; // a hook that the check called has removed it
    const bool reload = m_state == DirChanged;
    if (reload) {
        Reload(options);
        if (!IsLinked())
            return true; // whoever was told has removed it
        if (ChangeDiagnostics() || GetManager()->GetDirectoryReloadMessages())
            ReportMessage(MessageChannel::Info, "reloadDirCheck", {ustring(GetName())});
    }
    if (!IsSettled())
        GetManager()->SetSettled(false);
    // A check does not go below a frozen directory; other types let the children decide for themselves.
    const bool descends = !(checks && before == DirFrozen);
    const bool below = options.recursive && descends && RefreshChildren(options);
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
    const EventBracket told(*GetManager(), this, ovEventRefreshBegin, ovEventRefreshEnd);
    if (m_dirType == ovDirTypeNull || !IsLinked())
        return;
    const ChangeChecks checks;
    const UnsettledByThrow unsettled(GetManager());
    const Placing placing(GetPathDir());
    Refresh(OptionsFor(type, false));
}

void PathAllDirItemInfo::RefreshTree(ovDirRefreshType type) {
    if (m_dirType == ovDirTypeNull)
        return;
    const Placing placing(GetPathDir());
    Refresh(OptionsFor(type, true));
}

void PathInfo::RefreshAllDirectories(ovDirRefreshType type) {
    const EventBracket told(*m_manager, m_manager->GetNullDir(), ovEventRefreshBegin, ovEventRefreshEnd);
    const ChangeChecks checks;
    if (!LooksAtNewsOnly(*m_manager, type))
        RefreshAllEntries(type);
    else if (host::Platform().HasNews())
        RefreshEntriesWithNews(type);
}

/// Supposes that it leaves the path settled, for whoever does not to take it back.
void PathInfo::RefreshAllEntries(ovDirRefreshType type) {
    const UnsettledByThrow unsettled(m_manager);
    m_manager->SetSettled(true);
    ForEachEntry(m_entries, [&](PathDirItemInfo& entry) { entry.RefreshTree(type); });
}

/// @pre the path is settled
void PathInfo::RefreshEntriesWithNews(ovDirRefreshType type) {
    const std::vector<PathDirItemInfo*> speaking = FindEntriesWithNews();
    if (speaking.empty())
        return;
    const UnsettledByThrow unsettled(m_manager);
    const std::vector<PathDirItemInfo*> before = m_entries;
    auto rest = before.begin();
    ForEachChild(speaking, [&](PathDirItemInfo& entry) {
        if (!m_manager->IsSettled())
            return;
        rest = std::find(rest, before.end(), &entry);
        rest += rest != before.end();
        entry.RefreshTree(type);
    });
    // Whoever was told may have marked others, which are then looked at in their turn.
    if (!m_manager->IsSettled())
        ForEachChild(ThoseStillAmong(m_entries, {rest, before.end()}),
                     [&](PathDirItemInfo& entry) { entry.RefreshTree(type); });
}

void PathInfo::SetAllChanged(DirState state) {
    for (PathDirItemInfo* entry : m_entries)
        if (entry)
            entry->SetChangeStateTree(state);
}

void PathAllDirItemInfo::SetChangeState(DirState state) {
    if (m_dirType == ovDirTypeNull || (m_state != DirLoaded && m_state != DirRecheck))
        return;
    m_state = state;
    GetManager()->SetSettled(false);
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
    const ovDir held(GetPathDir());
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
        KeptFrozen unlessItFails(m_state);
        m_state = DirRecheck;
        StartChangeDetection(true);
        unlessItFails.LetGo();
        return;
    }
    if (m_state != DirLoaded) {
        const UnsettledByThrow unsettled(GetManager());
        const Placing placing(GetPathDir());
        Refresh(options);
    }
    if (!IsLinked())
        return; // whoever was told has removed it
    ReleaseNotification();
    m_state = DirFrozen;
}
