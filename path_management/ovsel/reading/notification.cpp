#include <array>
#include <charconv>
#include <utility>

#include <ovsel/names.hpp>

#include "host_interfaces/text.hpp"
#include "ovsel/frame/filesystemtable.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/reading/changediagnostics.hpp"
#include "ovsel/reading/watchtable.hpp"

namespace {

constexpr std::uint32_t watchedChanges =
    host::ChangeFileName | host::ChangeDirName | host::ChangeSize | host::ChangeLastWrite;
constexpr std::uint32_t probeMilliseconds = 1000;
constexpr char16_t probeFileName[] = u"$sorven_temp_file$";
constexpr char probeText[] = "$sorven_temp_file$";

using Arguments = std::vector<ustring>;

/// Values of FileSystemEntry::m_probeState.
enum ProbeState : std::uint32_t { NotProbed = 0, ProbeImpossible = 1, ProbeWritten = 2 };

ustring Hex(std::uint64_t value, const char* prefix = "") {
    std::array<char, 20> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size() - 1, value, 16);
    return fl::i18n::to_ustring((std::string(prefix) + digits.data()).c_str());
}

ustring Number(int value) { return fl::i18n::to_ustring(std::to_string(value).c_str()); }

const char16_t* LabelOf(std::uint32_t waitResult) {
    switch (waitResult) {
    case host::WaitTimeout:
        return u"WAIT_TIMEOUT";
    case host::WaitObject0:
        return u"WAIT_OBJECT_0";
    case host::WaitFailed:
        return u"WAIT_FAILED";
    default:
        return u"Unknown Value!";
    }
}

void Warn(const char* id, const ustring& name) { ReportMessage(MessageChannel::Warning, id, {name}); }

/// The policies that rest on a directory's time.
bool IsByTimeStamp(ovRefreshPolicy policy) {
    return policy == ovRefreshByTimeStampQuiet || policy == ovRefreshByTimeStamp;
}

} // namespace

void PathAllDirItemInfo::StartChangeDetection(bool watch) {
    ReleaseNotification();
    ustring room;
    if (!watch || m_state == DirFrozen) {
        m_refreshPolicy = ovRefreshNever;
        if (m_state == DirUnloaded && !watch)
            ReportDiagnostic("skipFindFirstDirCheck", [&] { return Arguments{GetCheckName(room)}; });
        return;
    }
    const ustring& name = GetCheckName(room);
    FileSystemEntry& fs = GetManager()->GetFileSystemEntry(m_fileSystemIndex);
    const bool isFirstOnFileSystem = fs.m_handlesObtained == 0 && fs.m_handleFailures == 0;
    const int notifiedBefore = GetManager()->GetNotifiedDirCount();
    WatchTable& watches = GetManager()->GetWatches();
    watches.MakeRoomForWatch();
    // What holds is noted before anybody is told, who may throw.
    m_notificationHandle = host::Platform().FindFirstChangeNotification(name, false, watchedChanges);
    m_refreshPolicy = HasNotificationHandle() ? ovRefreshNotified : PolicyWithoutHandle();
    if (HasNotificationHandle()) {
        m_watchPlace = watches.Enter(m_notificationHandle, this);
        ++fs.m_handlesObtained;
        GetManager()->IncrementNotifiedDirCount();
    }
    ReportDiagnostic("inUseFindFirstDirCheck", [&] {
        return Arguments{Number(notifiedBefore), Hex(m_notificationHandle, "0x"), name};
    });
    if (m_remote && (fs.m_probeState < ProbeWritten || isFirstOnFileSystem))
        ProbeNotification(name);
    if (HasNotificationHandle())
        return;
    HandleRefused(name);
    if (!IsByTimeStamp(m_refreshPolicy))
        return;
    if (GetDirType() != ovDirTypeCWD && fs.m_probeState == ProbeImpossible && fs.m_handlesObtained != 0)
        m_refreshPolicy = ovRefreshNever;
    else
        RecordDirTimeStamp();
}

ovRefreshPolicy PathAllDirItemInfo::PolicyWithoutHandle() const {
    const IPathManager& manager = *GetManager();
    if (GetDirType() == ovDirTypeCWD)
        return m_remote ? manager.GetNonNotifiedRemoteCWDRefreshPolicy()
                        : manager.GetNonNotifiedCWDRefreshPolicy();
    return m_remote ? manager.GetNonNotifiedRemotePathRefreshPolicy()
                    : manager.GetNonNotifiedPathRefreshPolicy();
}

bool PathAllDirItemInfo::IsWarningDue() const {
    switch (GetManager()->GetNotificationHandleWarnings()) {
    case ovWarnCNHAlways:
        return true;
    case ovWarnCNHOnce:
        return GetManager()->GetFileSystemEntry(m_fileSystemIndex).m_warnings == 0 || ChangeDiagnostics();
    default:
        return ChangeDiagnostics();
    }
}

/// Does this file system tell of a file that this process writes, within a second? A directory that cannot be
/// written to answers nothing, and the next one on the file system is tried.
void PathAllDirItemInfo::ProbeNotification(const ustring& name) {
    FileSystemEntry& fs = GetManager()->GetFileSystemEntry(m_fileSystemIndex);
    if (GetManager()->IsTempFileProbeDisabled()) {
        fs.m_warnings = 1; // closes the rationing
        fs.m_probeState = ProbeImpossible;
        return;
    }
    ustring file = name;
    ovConcatPathName(file, probeFileName);
    file += Hex(host::Platform().CurrentProcessId());
    if (!host::Platform().WriteProbeFile(file, probeText)) {
        fs.m_probeState = ProbeImpossible;
        return;
    }
    fs.m_probeState = ProbeWritten;
    if (!HasNotificationHandle())
        return;
    if (host::Platform().WaitForSingleObject(m_notificationHandle, probeMilliseconds) == host::WaitObject0) {
        host::Platform().FindNextChangeNotification(m_notificationHandle); // the probe's own event
    } else if (IsWarningDue()) {
        ++fs.m_warnings;
        Warn("nonResponsiveRemoteChangeNotification", name);
    }
}

/// A remote warning counts towards the ration of its file system, a local one does not.
void PathAllDirItemInfo::HandleRefused(const ustring& name) {
    FileSystemEntry& fs = GetManager()->GetFileSystemEntry(m_fileSystemIndex);
    // The first refusal behind earlier successes is news.
    if (!GetManager()->IsTempFileProbeDisabled() && fs.m_handlesObtained >= 1 && fs.m_handleFailures == 0)
        fs.m_warnings = 0;
    ++fs.m_handleFailures;
    if (!IsWarningDue())
        return;
    if (!m_remote) {
        if (m_fileSystemIndex != FileSystemTable::UnknownRow)
            Warn("couldNotGetHandleLocalChangeNotification", name);
        return;
    }
    if (PolicyWithoutHandle() <= ovRefreshByTimeStampQuiet && !ChangeDiagnostics())
        return;
    Warn(fs.m_handlesObtained >= 1 ? "ranOutOfHandlesRemoteChangeNotification"
                                   : "noSupportRemoteChangeNotification",
         name);
    ++fs.m_warnings;
}

void PathAllDirItemInfo::ReleaseNotification() {
    GetManager()->SetSettled(false);
    m_changeTick = 1;
    m_refreshPolicy = ovRefreshNever;
    if (!HasNotificationHandle())
        return;
    try {
        ReportDiagnostic("releaseNotificationHandle", [&] { return Arguments{ustring(GetName())}; });
    } catch (...) {
        // A removal that has begun is not to be stopped.
    }
    if (PathAllDirItemInfo* const moved = GetManager()->GetWatches().Leave(m_watchPlace))
        moved->m_watchPlace = m_watchPlace;
    GetManager()->DecrementNotifiedDirCount();
    host::Platform().FindCloseChangeNotification(
        std::exchange(m_notificationHandle, host::InvalidChangeHandle));
}

bool PathAllDirItemInfo::CheckChanged() {
    if (m_state == DirFrozen)
        return false;
    if (HasNotificationHandle())
        return CheckNotification();
    if (IsByTimeStamp(m_refreshPolicy)) {
        ustring room;
        return CheckTimeStamp(GetCheckName(room));
    }
    if (m_refreshPolicy != ovRefreshAlways)
        return NoChangeSeen();
    if (ChangeDiagnostics() || GetManager()->GetDirectoryReloadMessages())
        ReportMessage(MessageChannel::Info, "forceReloadDirCheck", {ustring(GetName())});
    m_dirTimeStamp = 1;
    m_changeSeen = true;
    return TakeAsChanged();
}

bool PathAllDirItemInfo::TakeAsChanged() {
    ++m_changeTick;
    m_state = DirChanged;
    return true;
}

bool PathAllDirItemInfo::CheckNotification() {
    const std::uint32_t result = host::Platform().WaitForSingleObject(m_notificationHandle, 0);
    ReportDiagnostic("changeNotificationDirCheck", [&] {
        return Arguments{LabelOf(result), ustring(GetName())};
    });
    if (result == host::WaitTimeout)
        return NoChangeSeen();
    if (result != host::WaitObject0 && m_remote)
        return NoChangeSeen(); // a server that does not answer has not changed
    // A local handle that has gone bad counts as a change at every check, until it is released.
    m_changeSeen = true;
    if (m_refreshPolicy <= ovRefreshByTimeStamp)
        m_dirTimeStamp = 1;
    TakeAsChanged();
    // Last, so that no change is consumed and forgotten.
    if (result == host::WaitObject0)
        host::Platform().FindNextChangeNotification(m_notificationHandle);
    return true;
}

void PathAllDirItemInfo::ApplyRefreshPolicy(ovRefreshPolicy policy) {
    if (!IsLinked() || m_state == DirFrozen || !m_remote || HasNotificationHandle())
        return; // a hook may have removed it meanwhile
    ReleaseNotification();
    m_refreshPolicy = policy;
    if (IsByTimeStamp(policy))
        RecordDirTimeStamp();
}

/// The current directory has a policy of its own.
void PathAllDirItemInfo::ApplyRefreshPolicyToTree(ovRefreshPolicy policy) {
    if (GetOrderNumber() != 0)
        ApplyRefreshPolicy(policy);
    std::vector<ovDir> below(m_packageDirs.begin(), m_packageDirs.end());
    below.insert(below.end(), m_classDirs.begin(), m_classDirs.end());
    for (const ovDir& dir : below)
        dir->ApplyRefreshPolicyToTree(policy);
    if (const ovDir held(m_privateDir); *held)
        held->ApplyRefreshPolicy(policy);
}

ovRefreshPolicy ovNonNotifiedRemoteCWDRefreshPolicy(ovPath path, ovRefreshPolicy policy) {
    const ovRefreshPolicy old = path->GetNonNotifiedRemoteCWDRefreshPolicy();
    if (policy != ovRefreshNotified) {
        path->SetNonNotifiedRemoteCWDRefreshPolicy(policy);
        path->ApplyRefreshPolicyToPathEntry(0, policy);
    }
    return old;
}

ovRefreshPolicy ovNonNotifiedRemotePathRefreshPolicy(ovPath path, ovRefreshPolicy policy) {
    AssertPathInService(path);
    const ovRefreshPolicy old = path->GetNonNotifiedRemotePathRefreshPolicy();
    if (policy != ovRefreshNotified) {
        path->SetNonNotifiedRemotePathRefreshPolicy(policy);
        path->ApplyRefreshPolicyToAllDirs(policy);
    }
    return old;
}

ovWarnInvalidCNH ovSetNotificationHandleWarnings(ovPath path, ovWarnInvalidCNH mode) {
    AssertPathInService(path);
    const ovWarnInvalidCNH old = path->GetNotificationHandleWarnings();
    path->SetNotificationHandleWarnings(mode);
    return old;
}
