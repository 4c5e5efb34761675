#include <ovsel/search.hpp>

#include <cstring>
#include <memory>
#include <string>

#include <ovsel/pathlist.hpp>

#include "host_interfaces/text.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/lookup/fullnamelookup.hpp"
#include "ovsel/lookup/ovnamesearchcontexti.hpp"
#include "ovsel/lookup/ovsearchallcontexti.hpp"
#include "ovsel/lookup/straightanswer.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathwalk.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/names/unitwords.hpp"

using Quorrant::ovsel::ovNameSearchContextI;
using Quorrant::ovsel::ovSearchAllContextI;
using Quorrant::ovsel::SearchQuestion;

namespace {

SearchQuestion AskFrom(const ovPath& path, const ovDir& dir, const ustring& name, ovExtensionList extensions,
                       SearchScope scope, ovCaseSensitivity rule) {
    return {path, name, extensions, *dir, scope, rule};
}

SearchQuestion AskPath(const ovPath& path, const ustring& name, ovExtensionList extensions, SearchScope scope,
                       ovCaseSensitivity rule) {
    AssertPathInService(path);
    return {path, name, extensions, nullptr, scope, rule};
}

/// Does the name say where to look? A name that ends in a separator does not.
bool IsQualified(const ustring& name) {
    const std::u16string_view leaf = FilePartOf(name);
    return !leaf.empty() && leaf.size() != name.size();
}

SearchQuestion AskVisible(const ovPath& path, const ovDir& dir, const ustring& name,
                          ovExtensionList extensions, ovCaseSensitivity rule) {
    if (IsQualified(name))
        return AskPath(path, name, extensions, SearchScopeAll, rule);
    return AskFrom(path, dir, name, extensions, SearchScopeVisible, rule);
}

ovDir AskersDir(const ovPath& path, std::u16string_view dirName) {
    if (HoldsAny(dirName, u'/'))
        return ovFindDirFullName(path, ustring(dirName));
    PathItemInfo* found =
        dirName.empty() ? nullptr : FullNameLookup(**path).FindDirFullName(dirName, ovDirTypeNull);
    return OrNullDir(**path,
                     found && found->IsDirRecord() ? static_cast<PathAllDirItemInfo*>(found) : nullptr);
}

/// A search that the host keeps; whoever asked may let go of the question.
template <class Context>
ovSearch* Keep(std::unique_ptr<Context> search) {
    search->KeepExtensions();
    return search.release();
}

ovSearch* CreateSearch(const SearchQuestion& question) {
    if (question.name.empty())
        return Keep(std::make_unique<ovSearchAllContextI>(question));
    return Keep(std::make_unique<ovNameSearchContextI>(question));
}

void SetDir(ovDir* out, const ovDir& dir) {
    if (out)
        *out = dir;
}

int FirstFile(ovSearch& search, ovDir* dir, ustring& fullName) {
    std::int32_t match = 0;
    SetDir(dir, search.FindNextFile(fullName, &match));
    return match;
}

/// One question, one answer: a search stays on the stack.
int AnswerOnce(const SearchQuestion& question, ovDir* dir, ustring& fullName) {
    if (const auto match = AnswerStraight(question, dir, fullName))
        return *match;
    if (question.name.empty()) {
        ovSearchAllContextI search(question);
        return FirstFile(search, dir, fullName);
    }
    ovNameSearchContextI search(question);
    return FirstFile(search, dir, fullName);
}

/// Runs a find on a wide name and hands that out narrow. @p out may be null.
template <class Find>
int Narrowed(char* out, Find find) {
    if (out)
        *out = '\0';
    ustring fullName;
    const int match = find(fullName);
    if (out && !fullName.empty()) {
        const std::string narrow = fl::i18n::codecvt_ustring_to_narrow_string()(fullName);
        std::memcpy(out, narrow.c_str(), narrow.size() + 1);
    }
    return match;
}

} // namespace

ovSearch* ovCreateAllSearchIterator(ovPath path, const ustring& name, ovExtensionList extensions,
                                    ovCaseSensitivity rule) {
    return CreateSearch(AskPath(path, name, extensions, SearchScopeAll, rule));
}

ovSearch* ovCreateAllSearchIterator(ovPath path, const char* name, ovExtensionList extensions,
                                    ovCaseSensitivity rule) {
    return ovCreateAllSearchIterator(path, fl::i18n::to_ustring(name), extensions, rule);
}

ovSearch* ovCreatePathOnlySearchIterator(ovPath path, const ustring& name, ovExtensionList extensions,
                                         ovCaseSensitivity rule) {
    return CreateSearch(AskPath(path, name, extensions, SearchScopePathOnly, rule));
}

ovSearch* ovCreatePathOnlySearchIterator(ovPath path, ovPath, const char* name, ovExtensionList extensions,
                                         ovCaseSensitivity rule) {
    return ovCreatePathOnlySearchIterator(path, fl::i18n::to_ustring(name), extensions, rule);
}

ovSearch* ovCreateMethodSearchIterator(ovPath path, const ustring& name, ovExtensionList extensions,
                                       ovCaseSensitivity rule) {
    return CreateSearch(AskPath(path, name, extensions, SearchScopeMethod, rule));
}

ovSearch* ovCreateDirSearchIterator(ovDir dir, const ustring& name, ovExtensionList extensions,
                                    ovCaseSensitivity rule) {
    return CreateSearch(AskFrom(ovGetPathOfDir(dir), dir, name, extensions, SearchScopeDir, rule));
}

ovSearch* ovCreateDirSearchIterator(ovDir dir, const char* name, ovExtensionList extensions,
                                    ovCaseSensitivity rule) {
    return ovCreateDirSearchIterator(dir, fl::i18n::to_ustring(name), extensions, rule);
}

ovSearch* ovCreatePrivateSearchIterator(ovDir dir, const ustring& name, ovExtensionList extensions,
                                        ovCaseSensitivity rule) {
    return CreateSearch(AskFrom(ovGetPathOfDir(dir), dir, name, extensions, SearchScopePrivate, rule));
}

ovSearch* ovCreateVisibleSearchIterator(ovDir dir, const ustring& name, ovExtensionList extensions,
                                        ovCaseSensitivity rule) {
    return CreateSearch(AskVisible(ovGetPathOfDir(dir), dir, name, extensions, rule));
}

ovSearch* ovCreateDirnameVisibleSearchIterator(ovPath path, const ustring& dirName, const ustring& name,
                                               ovExtensionList extensions, ovCaseSensitivity rule) {
    return CreateSearch(AskVisible(path, AskersDir(path, dirName), name, extensions, rule));
}

int ovFindNextFile(ovSearch* search, ovDir* dir, ustring& name) {
    return search ? FirstFile(*search, dir, name) : 0;
}

int ovFindNextFile(ovSearch* search, ovDir* dir, char* name) {
    return Narrowed(name, [&](ustring& fullName) { return ovFindNextFile(search, dir, fullName); });
}

int ovFindNextFileBounded(ovSearch* search, ovDir* dir, ustring& name) {
    if (!search)
        return 0;
    std::int32_t match = 0;
    *dir = search->FindNextFileBounded(name, &match);
    return match;
}

int ovFindNextFileBounded(ovSearch* search, ovDir* dir, char* name) {
    return Narrowed(name, [&](ustring& fullName) { return ovFindNextFileBounded(search, dir, fullName); });
}

int ovFindNextUnspecified(ovSearch* search, ovDir* dir, ustring& name) {
    if (!search)
        return 0;
    std::int32_t match = 0;
    SetDir(dir, search->FindNextUnspecified(name, &match));
    return match;
}

bool ovFindNextDir(ovSearch* search, ovDir* dir) {
    if (!search)
        return false;
    ustring fullName;
    const ovDir found = search->FindNextDir(fullName);
    SetDir(dir, found);
    return ovGetDirType(found) != ovDirTypeNull;
}

void ovDestroySearch(ovSearch** search) {
    delete *search;
    *search = nullptr;
}

int ovFindFirstFileInAll(ovPath path, const ustring& name, ovExtensionList extensions, ovDir* dir,
                         ustring& fullName) {
    return AnswerOnce(AskPath(path, name, extensions, SearchScopeAll, ovCaseOfPath), dir, fullName);
}

int ovFindFirstFileInAll(ovPath path, const char* name, ovExtensionList extensions, ovDir* dir,
                         char* fullName) {
    return Narrowed(fullName, [&](ustring& wide) {
        return ovFindFirstFileInAll(path, fl::i18n::to_ustring(name), extensions, dir, wide);
    });
}

int ovFindFirstFileVisibleToFile(ovPath path, const ustring& asker, const ustring& name,
                                 ovExtensionList extensions, ovDir* dir, ustring& fullName) {
    const ovDir from = AskersDir(path, DirPartOf(asker));
    return AnswerOnce(AskVisible(path, from, name, extensions, ovCaseOfPath), dir, fullName);
}
