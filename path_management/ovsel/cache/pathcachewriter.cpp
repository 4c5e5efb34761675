#include "ovsel/cache/pathcachewriter.hpp"

#include <ctime>
#include <iomanip>
#include <locale>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <ovsel/cache.hpp>
#include <ovsel/cwd.hpp>
#include <ovsel/pathlist.hpp>
#include <ovsel/refresh.hpp>
#include <ovsel/search.hpp>

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/storage.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/ovsearch.hpp"
#include "ovsel/names/nameequality.hpp"

namespace vfs = foundation::storage::vfs;

namespace Quorrant::ovsel {

namespace {

struct EndSearch {
    void operator()(ovSearch* search) const { ovDestroySearch(&search); }
};

ustring FrozenPrefixOf(const ovPath& path) {
    const ustring* prefix = path->GetPreFrozenPrefix();
    return prefix ? *prefix + fl::filesystem::PATHNAME_SEPARATOR : ustring();
}

char LetterOf(const ustring& name, std::int32_t itemClass, std::int32_t fileKind) {
    if (itemClass == 1)
        return 'd';
    if (itemClass != 2)
        return 'U';
    if (!name.ends_with(u".sv") && !name.ends_with(u".p"))
        return 'F';
    return fileKind == 1 ? 'C' : fileKind == 2 ? 'N' : 'F';
}

ustring DateText() {
    std::tm local{};
    if (!host::Platform().LocalTime(host::Platform().CurrentTime(), local))
        throw std::runtime_error("could not convert calendar time to local time");
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::put_time(&local, "%a %b %d %H:%M:%S %Y");
    return fl::i18n::codecvt_ascii_to_ustring()(text.str());
}

} // namespace

PathCacheWriter::PathCacheWriter(ovPath path, std::ostream& stream, ustring date)
    : m_path(path),
      m_stream(stream),
      m_date(std::move(date)),
      m_converter("UTF-8"),
      m_frozenPrefix(FrozenPrefixOf(m_path)),
      m_frozenPrefixLength(m_frozenPrefix.length()) {}

void PathCacheWriter::Write() {
    m_stream << "<Quorrant type=\"Path Cache File\" version=\"1.2\" date=\"" << m_converter(m_date)
             << "\">\n";
    for (ovDir dir = ovGetNextPathDir(ovGetCWD(m_path)); ovGetDirType(dir) != ovDirTypeNull;
         dir = ovGetNextPathDir(dir))
        if (IsWritten(dir))
            WriteDirectory(dir);
    m_stream << "</Quorrant>\n";
}

bool PathCacheWriter::IsWritten(const ovDir& dir) const {
    if (!ovIsFrozen(dir))
        return false;
    const ustring name = ovGetDirName(dir);
    return NamesEqual(std::u16string_view(name).substr(0, m_frozenPrefixLength), m_frozenPrefix,
                      m_path->IsCaseSensitive());
}

void PathCacheWriter::WriteDirectory(const ovDir& dir) {
    ++m_depth;
    const ustring directoryName = ovGetDirName(dir);
#ifndef NDEBUG
    if (!(directoryName.length() > m_frozenPrefixLength))
        HOST_FATAL("directoryName.length() > m_frozenPrefixLength");
#endif
    const ustring generic =
        fl::filesystem::make_generic_form(fl::filesystem::make_native_form(directoryName, true));
    Indent();
    m_stream << "<D name=\"" << m_converter(generic.substr(m_frozenPrefixLength)) << "\">\n";
    WriteChildren(dir);
    WriteFiles(dir);
    Indent();
    m_stream << "</D>\n";
    --m_depth;
}

void PathCacheWriter::WriteChildren(const ovDir& dir) {
    for (ovDir child = ovGetPackageDirs(dir, dir); ovGetDirType(child) != ovDirTypeNull;
         child = ovGetPackageDirs(dir, child))
        WriteDirectory(child);
    for (ovDir child = ovGetMethodDirs(dir, dir); ovGetDirType(child) != ovDirTypeNull;
         child = ovGetMethodDirs(dir, child))
        WriteDirectory(child);
    if (const ovDir child = ovGetPrivateDir(dir); ovGetDirType(child) != ovDirTypeNull)
        WriteDirectory(child);
}

void PathCacheWriter::WriteFiles(const ovDir& dir) {
    ++m_depth;
    const std::unique_ptr<ovSearch, EndSearch> items(
        ovCreateDirSearchIterator(dir, ustring(), nullptr, ovCasePlatformDefault));
    for (;;) {
        std::int32_t itemClass = 0;
        std::int32_t fileKind = 0;
        const ustring name = items->GetCurrentItemInfo(itemClass, fileKind);
        if (name.empty())
            break;
        Indent();
        m_stream << '<' << LetterOf(name, itemClass, fileKind) << " name=\"" << m_converter(name) << "\"/>\n";
    }
    --m_depth;
}

void PathCacheWriter::Indent() { m_stream << std::setw(m_depth) << ""; }

} // namespace Quorrant::ovsel

bool ovWritePathToCacheFile(ovPath path, const char* fileName) {
    // Composed first, so that what cannot be written leaves the file as it is, and so that the walk over the
    // path meets nothing of the host's that could change it.
    std::ostringstream text;
    Quorrant::ovsel::PathCacheWriter(path, text, Quorrant::ovsel::DateText()).Write();
    const ustring native = fl::filesystem::make_native_form(fl::i18n::to_ustring(fileName), true);
    vfs::File file;
    path->GetFileByIRI(file, vfs::toAbsoluteIRI(u"file", native));
    vfs::ofstream stream(file);
    stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
    stream << text.str() << std::flush;
    return true;
}
