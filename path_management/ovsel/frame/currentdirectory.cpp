#include <algorithm>
#include <cstring>
#include <string>

#include <ovsel/cwd.hpp>

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/frame/eventbracket.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/frame/pathinfo.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/names/namelimits.hpp"
#include "ovsel/names/pathnames.hpp"

namespace {

const char NoDirectorySpecified[] = "No directory specified";
const char FailedToChange[] = "Failed to change current directory";

/// Holds a flag up as long as it lives.
class Raised {
  public:
    explicit Raised(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Raised() { m_flag = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

  private:
    bool& m_flag;
};

/// The text for the result of an accessibility test or of a change of the process's directory; null for
/// success.
const char* ErrorText(ovDirAccessibility result) {
    // cppcheck-suppress missingReturn ; it does not know that the fatal end never comes back
    switch (result) {
    case ovDirAccessible:
        return nullptr;
    case ovDirPermissionDenied:
        return "Directory permission denied";
    case ovDirNonexistent:
        return "Name is nonexistent or not a directory";
    case ovDirAccessFailure:
        return "Directory access failure";
    }
    HOST_FATAL("Unexpected dirAccess identifier to report cd error message");
}

ovDirAccessibility ChangeProcessDirectory(const ustring& name) {
    try {
        fl::filesystem::current_path(name);
        return ovDirAccessible;
    } catch (const fl::filesystem::InvalidArgument&) {
        return ovDirNonexistent;
    } catch (const fl::filesystem::PathNotFound&) {
        return ovDirNonexistent;
    } catch (const fl::filesystem::AccessDenied&) {
        return ovDirPermissionDenied;
    } catch (...) {
        return ovDirAccessFailure;
    }
}

ustring ProcessDirectory() {
    try {
        return fl::filesystem::current_path();
    } catch (const fl::filesystem::Failure&) {
        return ustring();
    }
}

} // namespace

const char* PathInfo::SetCWD(const ustring& name) {
    if (m_changingCWD)
        return FailedToChange; // asked by a callback while the slot is empty
    ustring resolved;
    if (const char* error = ResolveCWDName(name, resolved))
        return error;
    InstallCWD(resolved);
    return nullptr;
}

/// Everything that can fail. The process's directory may have changed although a later test fails.
const char* PathInfo::ResolveCWDName(const ustring& name, ustring& resolved) const {
    if (name.size() > MaxDirNameLength)
        return "Directory name too long";
    ustring working = name;
    std::replace(working.begin(), working.end(), u'/', u'\\');
    if (m_manager->IsProcessCWDOwner() && !name.empty())
        if (const char* error = ErrorText(ChangeProcessDirectory(name)))
            return error;
    // The owner takes the operating system's spelling of where it is now; others keep the name that they are
    // given.
    if (name.empty() || m_manager->IsProcessCWDOwner())
        working = ProcessDirectory();
    resolved = fl::filesystem::make_native_form(working, true);
    if (resolved.empty())
        return FailedToChange;
    return ErrorText(m_manager->GetDirAccessibility(resolved));
}

void PathInfo::InstallCWD(const ustring& name) {
    const EventBracket told(*m_manager, m_manager->GetNullDir(), ovEventCWDChangeBegin, ovEventCWDChangeEnd);
    if (!m_manager->IsValid())
        return; // a callback has removed the path
    const ovDir record(ReplaceCWD(name));
    if (*record)
        m_manager->NotifyInterests(*record, ovEventDirAdded);
}

/// Ends the old record and reads the new one; null if a callback has removed the path meanwhile.
PathDirItemInfo* PathInfo::ReplaceCWD(const ustring& name) {
    const Raised changing(m_changingCWD);
    if (m_entries.empty())
        m_entries.push_back(nullptr);
    else if (m_entries.front())
        m_entries.front()->Destroy();
    m_entries.front() = nullptr;
    if (!m_manager->IsValid())
        return nullptr;
    PathDirItemInfo::Owner made(new (m_manager)
                                    PathDirItemInfo(m_manager, name, FilePartOf(name), 0, ovDirTypePath));
    m_manager->RegisterDirRecord(made.get());
    PathDirItemInfo* const record = made.release();
    m_entries.front() = record;
    record->SetPositionIn(this, 0);
    const ovDir held(record);
    try {
        record->Load(m_manager->GetFreezeAllAddedDirectories() || record->IsPreFrozen());
    } catch (...) {
        record->PlacePendingItems(); // what has been read stays
        throw;
    }
    if (!IsActive())
        return nullptr;
    record->PlacePendingItems();
    return record;
}

const char* ovSetCWDName(ovPath path, const ustring& name) {
    if (!IsPathInService(path))
        return nullptr;
    return name.empty() ? NoDirectorySpecified : path->SetCWD(name);
}

const char* ovSetCWDName(ovPath path, const char* name) {
    return name ? ovSetCWDName(path, fl::i18n::to_ustring(name)) : NoDirectorySpecified;
}

ovDir ovGetCWD(ovPath path) {
    AssertPathInService(path);
    return ovDir(path->GetCWD());
}

ustring ovGetCWDName(ovPath path) {
    ustring name;
    if (IsPathInService(path))
        path->GetCWD()->GetFullName(name);
    return name;
}

char* ovGetCWDName(ovPath path, char* buffer, unsigned size) {
    if (size == 0)
        return nullptr;
    const std::string name = fl::i18n::codecvt_ustring_to_narrow_string()(ovGetCWDName(path));
    if (name.empty())
        return nullptr;
    const std::size_t length = std::min<std::size_t>(name.size(), size - 1);
    std::memcpy(buffer, name.data(), length);
    buffer[length] = '\0';
    return buffer;
}

void ovHideCWD(ovPath path, bool hide) {
    AssertPathInService(path);
    path->HideCWD(hide);
}

bool ovIsCWDHidden(ovPath path) {
    AssertPathInService(path);
    return path->IsCWDHidden();
}

bool ovIsCWDOnPath(ovPath path) {
    AssertPathInService(path);
    return path->FindPathDir(path->GetCWD()->GetStoredFullName(), DirScope::Path) != nullptr;
}

bool ovIsPathDirAlsoCWD(const ovDir& dir) {
    if (ovGetDirType(dir) != ovDirTypePath)
        return false;
    const auto* record = static_cast<const PathDirItemInfo*>(*dir);
    return record->GetManager()->FindPathDir(record->GetStoredFullName(), DirScope::CWD) != nullptr;
}
