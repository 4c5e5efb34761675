#include <ovsel/cache.hpp>

#include <ovsel/hooks.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/cache/cachehooks.hpp"
#include "ovsel/cache/cachestate.hpp"
#include "ovsel/cache/loadtoolboxcache.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/reading/vfsmode.hpp"

using namespace Quorrant::ovsel;

void ovUseToolboxCache(ovPath path, const ustring& cacheFile, const ustring& prefix, bool report) {
    CacheState& state = CacheState::Get();
    state.ResetCounts();
    if (state.disabled) {
        if (state.IsTalkative())
            HostPrintf("Request to use Toolbox Cache received and ignored.\n");
        return;
    }
    state.report = report;
    state.prefix = prefix + fl::filesystem::PATHNAME_SEPARATOR;
    const std::string fileName = fl::i18n::codecvt_ustring_to_narrow_string()(cacheFile);
    if (!LoadToolboxCache(path, fileName.c_str(), state.prefix))
        return;
    // What is loaded is in use before anything is printed about it, which takes memory.
    if (!IsVFSMode())
        ovSetIOFcns(path, CacheReadDirectory, CacheGetAccessibility, nullptr, CacheIsDirectory,
                    CacheGetFileTime);
    state.inMode = true;
    if (state.tree && path != nullptr)
        path->ExpectNames(state.tree->GetEntryCount());
    if (state.IsTalkative()) {
        HostPrintf("Request to use Toolbox Cache received or confirmed.\n");
        HostPrintf("Toolbox Path prefix is %s\n", PrintableName(state.prefix).c_str());
    }
}

void ovRevertFromToolboxCache(ovPath path) {
    CacheState& state = CacheState::Get();
    if (state.inMode && IsVFSMode())
        path->ClearCachedDirItems();
    else
        state.SetTree(nullptr);
    state.inMode = false;
    ovSetIOFcns(path, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (state.IsTalkative())
        HostPrintf("Toolbox Path Cache resetting...\n\tTotalDirLookupRequests = %d\n\tTotalDirLookupHits = "
                   "%d\n\tNumCompares = %d\n",
                   state.totalDirLookupRequests, state.totalDirLookupHits, static_cast<int>(state.compares));
}

void ovDisableToolboxCache() { CacheState::Get().disabled = true; }

bool ovInToolboxCacheMode() { return CacheState::Get().inMode; }

void ovEnableToolboxCacheDiagnosticTrace(bool on) { CacheState::Get().trace = on; }

void ovEnableToolboxCacheDiagnosticStatusReport(bool on) { CacheState::Get().statusReport = on; }
