#include "ovsel/frame/pathinfo.hpp"

#include <algorithm>
#include <memory>
#include <optional>

#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "ovsel/frame/eventbracket.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/frame/messages.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/names/makeroom.hpp"
#include "ovsel/names/namelimits.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/names/pathnames.hpp"

PathInfo::~PathInfo() { Clear(); }

void PathInfo::Clear() {
    for (std::size_t i = m_entries.size(); i-- > 0;)
        if (m_entries[i])
            RemoveDir(m_entries[i]);
}

/// Only the list that its manager shows moves chains; one that is being torn down does not.
bool PathInfo::IsActive() const { return m_manager->GetPathInfo() == this; }

bool PathInfo::ValidatePathDirName(const ustring& fullName) const {
    const auto reject = [&](const char* id) {
        ReportMessage(MessageChannel::Warning, id, {fullName});
        return false;
    };
    if (ovIsDirNameMethodDirName(fullName))
        return reject("methodDirectoriesNotAllowedOnPath");
    if (ovIsDirNamePackageDirName(fullName))
        return reject("packageDirectoriesNotAllowedOnPath");
    if (FilePartOf(fullName) == PrivateDirName)
        return reject("privateDirectoriesNotAllowedOnPath");
    switch (m_manager->GetDirAccessibility(fullName)) {
    case ovDirAccessible:
        return true;
    case ovDirPermissionDenied:
        return reject("directoryPermissionDenied");
    case ovDirNonexistent:
        return reject("nameNonexistentOrNotADirectory");
    default:
        return reject("directoryAccessFailure");
    }
}

PathDirItemInfo* PathInfo::AddDir(const ustring& name, bool atBegin, bool freeze) {
    DirLocation location;
    m_manager->ResolveDirLocation(location, name);
    if (!location.resolved || m_manager->FindPathDir(location.fullName, DirScope::Path) ||
        !ValidatePathDirName(location.fullName))
        return nullptr;

    if (m_entries.empty())
        m_entries.push_back(nullptr); // no current directory; the slot stays reserved for one
    const int position = atBegin ? 1 : GetPathEntryCount();
    const std::u16string_view last = FilePartOf(location.fullName);
    const ustring leaf = last.empty() ? location.fullName : ustring(last);
    PathDirItemInfo::Owner record(
        new (m_manager) PathDirItemInfo(m_manager, location.fullName, leaf, position, ovDirTypePath));
    record->Load(freeze || record->IsPreFrozen());
    if (!m_manager->IsValid())
        return nullptr; // a callback has removed the path

    MakeRoom(m_entries);
    m_manager->RegisterDirRecord(record.get());
    Insert(record.get(), atBegin);
    PathDirItemInfo* added = record.release();
    const ovDir held(added);
    m_manager->NotifyInterests(added, ovEventDirAdded);
    if (added->GetPositionIn(this) < 0)
        return nullptr; // whoever was told has removed it
    if (IsActive())
        added->PlacePendingItems();
    return added;
}

/// Callbacks may have changed the list since the position was chosen, so it is held to what is there now.
void PathInfo::Insert(PathDirItemInfo* record, bool atBegin) {
    const std::size_t at = atBegin ? 1 : m_entries.size();
    m_entries.insert(m_entries.begin() + static_cast<std::ptrdiff_t>(at), record);
    RenumberEntries(at);
}

void PathInfo::RemoveDir(PathDirItemInfo* record) {
    // A callback may ask again while it is being told, or before the record has entered the list.
    if (record->IsBeingDestroyed() || record->GetPositionIn(this) < 0)
        return;
    record->AddRef();
    record->Destroy();
    const auto position = static_cast<std::size_t>(record->GetPositionIn(this));
    record->RemovePositionIn(this);
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(position));
    RenumberEntries(position);
    record->SetOrder(-1);
    record->Release();
}

void PathInfo::RemoveDirByName(const ustring& name) {
    const ustring native = fl::filesystem::make_native_form(name, true);
    if (native.empty())
        return;
    if (PathDirItemInfo* record = m_manager->FindPathDir(native, DirScope::Path))
        RemoveDir(record);
}

void PathInfo::RenumberEntries(std::size_t from) {
    const bool active = IsActive();
    for (std::size_t i = from; i < m_entries.size(); ++i) {
        if (!m_entries[i])
            continue;
        m_entries[i]->SetPositionIn(this, static_cast<std::int32_t>(i));
        if (active)
            m_entries[i]->SetOrder(static_cast<std::int32_t>(i));
    }
}

/// Notes the move; all that are noted are made at once, so that turning a long path costs no renumbering for
/// each. @pre FinishMoves comes before anything that might call back.
void PathInfo::MoveEntryToEnd(PathDirItemInfo* record) {
    if (record->GetPositionIn(this) >= 0)
        m_movingEntries.push_back(record);
}

/// The others move up and keep their order, so that only the moved records need new places in the chains.
void PathInfo::FinishMoves() {
    if (m_movingEntries.empty())
        return;
    auto from = m_entries.size();
    for (const PathDirItemInfo* record : m_movingEntries) {
        const auto position = static_cast<std::size_t>(record->GetPositionIn(this));
        m_entries[position] = nullptr;
        from = std::min(from, position);
    }
    const auto kept =
        std::remove(m_entries.begin() + static_cast<std::ptrdiff_t>(from), m_entries.end(), nullptr);
    std::copy(m_movingEntries.begin(), m_movingEntries.end(), kept);
    RenumberEntries(from);
    if (IsActive())
        PathDirItemInfo::PlaceAllItems(m_movingEntries);
    m_movingEntries.clear();
}

bool PathInfo::ReplacePath(const ustring& path) {
    const EventBracket told(*m_manager, m_manager->GetNullDir(), ovEventPathReplaceBegin,
                            ovEventPathReplaceEnd);
    if (!m_manager->IsValid())
        return false;
    SetReplaceMarks(true);
    bool changed = false;
    if (!ReplaceByTokens(path, changed))
        SetReplaceMarks(false);
    if (RemoveMarked())
        changed = true;
    return changed;
}

/// Makes the moves that are left at the end, also when a hook throws.
class PathInfo::Moving {
  public:
    explicit Moving(PathInfo& list) : m_list(list) {}
    ~Moving() { m_list.FinishMoves(); }
    Moving(const Moving&) = delete;
    Moving& operator=(const Moving&) = delete;

  private:
    PathInfo& m_list;
};

/// @return false if a name that is too long ended the work.
bool PathInfo::ReplaceByTokens(const ustring& path, bool& changed) {
    const Moving moving(*this);
    constexpr char16_t separator = u';';
    std::size_t start = path.find_first_not_of(separator);
    while (start != ustring::npos && m_manager->IsValid()) {
        const std::size_t end = std::min(path.find(separator, start), path.size());
        const ustring token = path.substr(start, end - start);
        if (token.size() > MaxDirNameLength) {
            FinishMoves();
            ReportMessage(MessageChannel::Warning, "directoryNameTooLong", {token});
            return false;
        }
        if (ReplaceByToken(fl::filesystem::make_native_form(token, true)))
            changed = true;
        start = path.find_first_not_of(separator, end);
    }
    return true;
}

/// @return true if adding the directory was tried, also in vain.
bool PathInfo::ReplaceByToken(const ustring& token) {
    if (token.empty())
        return false;
    PathDirItemInfo* present = m_manager->FindPathDir(token, DirScope::Path);
    if (present && present->HasReplaceMark()) {
        present->SetReplaceMark(false);
        MoveEntryToEnd(present);
        return false;
    }
    FinishMoves();
    if (PathDirItemInfo* added = AddDir(token, false, m_manager->GetFreezeAllAddedDirectories()))
        added->SetReplaceMark(false);
    return true;
}

void PathInfo::SetReplaceMarks(bool on) {
    for (std::size_t i = 1; i < m_entries.size(); ++i)
        m_entries[i]->SetReplaceMark(on);
}

bool PathInfo::RemoveMarked() {
    bool removed = false;
    for (std::size_t i = 1; i < m_entries.size();) {
        PathDirItemInfo* record = m_entries[i];
        if (!record->HasReplaceMark()) {
            ++i;
            continue;
        }
        record->SetReplaceMark(false);
        RemoveDir(record);
        removed = true;
    }
    return removed;
}
