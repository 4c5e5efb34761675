#include "ovsel/frame/iohooks.hpp"

#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/frame/pathregistry.hpp"

namespace {

struct DefaultTable {
    IOHooks hooks;
    bool complete = false;
};

DefaultTable& Table() {
    static DefaultTable table;
    return table;
}

} // namespace

IOHooks IOHooks::Merge(const IOHooks& preferred, const IOHooks& fallback) {
    const auto pick = [](auto first, auto second) { return first ? first : second; };
    return {pick(preferred.m_readDirectoryFcn, fallback.m_readDirectoryFcn),
            pick(preferred.m_dirAccessibilityFcn, fallback.m_dirAccessibilityFcn),
            pick(preferred.m_reservedIOFcn, fallback.m_reservedIOFcn),
            pick(preferred.m_dirExistsFcn, fallback.m_dirExistsFcn),
            pick(preferred.m_fileTimeFcn, fallback.m_fileTimeFcn)};
}

bool IOHooks::IsComplete() const {
    return m_readDirectoryFcn && m_dirAccessibilityFcn && m_reservedIOFcn && m_dirExistsFcn && m_fileTimeFcn;
}

const IOHooks& IOHooks::Defaults() { return Table().hooks; }

bool IOHooks::AreDefaultsComplete() { return Table().complete; }

bool ovSetDefaultIOFcns(ovReadDirectoryFcn readDirectory, ovDirAccessibilityFcn dirAccessibility,
                        ovReservedIOFcn reserved, ovDirExistsFcn dirExists, ovFileTimeFcn fileTime) {
    DefaultTable& table = Table();
    table.hooks =
        IOHooks::Merge({readDirectory, dirAccessibility, reserved, dirExists, fileTime}, table.hooks);
    table.complete = table.hooks.IsComplete();
    return table.complete;
}

bool ovSetIOFcns(ovPath path, ovReadDirectoryFcn readDirectory, ovDirAccessibilityFcn dirAccessibility,
                 ovReservedIOFcn reserved, ovDirExistsFcn dirExists, ovFileTimeFcn fileTime) {
    AssertPathInService(path);
    path->SetIOFcns(readDirectory, dirAccessibility, reserved, dirExists, fileTime);
    return true;
}

void ovUpdatePathArrayDefaultIOFcns() {
    PathRegistry::ForEach(
        [](IPathManager& manager) { manager.SetIOFcns(nullptr, nullptr, nullptr, nullptr, nullptr); });
}
