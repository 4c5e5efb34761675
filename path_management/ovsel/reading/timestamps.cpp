#include "host_interfaces/platform.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathalldiriteminfo.hpp"
#include "ovsel/reading/changediagnostics.hpp"

// Times are whole seconds. What changed in the second of the last look, or in the one before, cannot be told
// from what did not, so a reference time is never that young, and a directory whose time is that young counts
// as changed.

bool& ChangeDiagnostics() {
    static bool on = false;
    return on;
}

namespace {

ustring Number(std::int64_t value) { return fl::i18n::to_ustring(std::to_string(value).c_str()); }

void ReportComparison(const char* caseId, std::int64_t reference, std::int64_t current, const ustring& name) {
    if (!ChangeDiagnostics())
        return;
    ustring text = fl::i18n::message_text({"SORVEN:ovsel", caseId, {}}, fl::i18n::Locale::global());
    ReportMessage(MessageChannel::Info, "timestampDiagnostic",
                  {std::move(text), Number(reference), Number(current), name});
}

/// Is this how a directory without a handle is watched?
bool ComparesTimes(ovRefreshPolicy policy) { return policy <= ovRefreshByTimeStamp; }

} // namespace

const ustring& PathAllDirItemInfo::GetCheckName(ustring& room) const {
    return m_resolvedName.empty() ? ReadFullName(room) : m_resolvedName;
}

void PathAllDirItemInfo::RecordDirTimeStamp() {
    ustring room;
    const std::int64_t time = GetManager()->GetFileTime(GetCheckName(room));
    const std::int64_t now = host::Platform().CurrentTime();
    m_dirTimeStamp = static_cast<std::int32_t>(time >= now - 1 ? now - 2 : time);
}

bool PathAllDirItemInfo::CheckTimeStamp(const ustring& name) {
    host::Platform().BeginNeighbours();
    const std::int64_t current = GetManager()->GetFileTime(name);
    if (current == m_dirTimeStamp) {
        ReportComparison("noChangeTimestampDiagnostic", m_dirTimeStamp, current, name);
        return NoChangeSeen();
    }
    const std::int64_t now = host::Platform().CurrentTime();
    if (current == now || current == now - 1) {
        // More may come in the same second: reload, and do not believe that this was all.
        ReportComparison(current == now ? "changedThisTickTimestampDiagnostic"
                                        : "changedLastTickTimestampDiagnostic",
                         m_dirTimeStamp, current, name);
        return true;
    }
    ReportComparison("changedTimestampDiagnostic", m_dirTimeStamp, current, name);
    ++m_changeTick;
    m_state = DirChanged;
    if (current != 0) {
        m_changeSeen = true;
        if (ComparesTimes(m_refreshPolicy))
            m_dirTimeStamp = static_cast<std::int32_t>(current);
    }
    return true;
}

/// The end of every check that found nothing. A directory's time does not move when a file in it is
/// rewritten, so under the policies that rest on it the counter moves at each check, and stamps look at the
/// file.
bool PathAllDirItemInfo::NoChangeSeen() {
    if (m_state == DirChanged) {
        ++m_changeTick;
        return true;
    }
    if (m_state == DirRecheck)
        m_state = DirLoaded;
    if (ComparesTimes(m_refreshPolicy))
        ++m_changeTick;
    return false;
}
