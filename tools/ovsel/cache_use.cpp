#include "tools/ovsel/cache_use.hpp"

#include <cstdio>

#include <fmt/format.h>

#include <host_interfaces/text.hpp>

#include "tools/ovsel/cache_file.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/output.hpp"

namespace tool {
namespace {

/// The library says little, and in one of its modes nothing at all; the tool's own reader finds the line.
std::string ReasonAgainst(const PathEntry& file, const std::string& saidByLibrary) {
    try {
        ReadCache(file.path, file.shown);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return fmt::format("{}: {}", Shown(file.shown), saidByLibrary);
}

} // namespace

void UseCache(const ovPath& path, const PathEntry& file, const ustring& prefix) {
    const auto name = linux_host::DriveMap::ToName(file.path);
    if (!name)
        throw EnvironmentError(fmt::format(
            "--cache {}: no mapped root holds it, or there is a \\ or : in its name", Shown(file.shown)));
    std::string reason = "the library does not take it";
    try {
        ovUseToolboxCache(path, *name, prefix, false);
    } catch (const fl::i18n::MessageException& error) {
        reason = error.what();
    }
    if (!ovInToolboxCacheMode())
        throw EnvironmentError("--cache " + ReasonAgainst(file, reason));
}

void CacheReport::Begin() { ovEnableToolboxCacheDiagnosticStatusReport(true); }

bool CacheReport::Take(std::string_view text) {
    const std::string line(text);
    std::sscanf(line.c_str(), "Toolbox Path Cache contains %d", &m_folders);
    std::sscanf(line.c_str(),
                "Toolbox Path Cache resetting... TotalDirLookupRequests = %d TotalDirLookupHits = %d "
                "NumCompares = %d",
                &m_lookups, &m_hits, &m_compares);
    m_missing += text.ends_with(" not found in Toolbox Path Cache\n") ? 1 : 0;
    return text.find("Toolbox") != std::string_view::npos;
}

std::string CacheReport::Finish(const ovPath& path) {
    ovRevertFromToolboxCache(path);
    // In the storage layer's mode there is nothing but zeros.
    if (m_folders == 0)
        return "";
    return fmt::format("cache of {} folders: {} questions for a folder, {} answered after {} comparisons; {} "
                       "folders under the prefix read from the disk",
                       m_folders, m_lookups, m_hits, m_compares, m_missing);
}

} // namespace tool
