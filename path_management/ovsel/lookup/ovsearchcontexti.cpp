#include "ovsel/lookup/ovsearchcontexti.hpp"

#include <algorithm>
#include <cctype>
#include <utility>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/names/plaintext.hpp"
#include "ovsel/names/unitwords.hpp"

namespace Quorrant::ovsel {

namespace {

struct ModeMasks {
    std::uint32_t categories;
    std::uint32_t itemKinds;
};

/// By SearchMode.
constexpr ModeMasks masksOfMode[] = {{7, 1}, {1904, 30}, {143, 16}, {32, 2}, {64, 4}, {137, 17}, {0, 0}};

constexpr std::int32_t anyExtension = -1;

bool IsSentinel(char16_t c) {
    return c == OvselConstants::U16_OOPSENTINEL[0] || c == OvselConstants::U16_OBJPKGSENTINEL[0];
}

constexpr char16_t separatorUnit = fl::filesystem::PATHNAME_SEPARATOR[0];

char16_t ToLower(char16_t c) { return c < 0x80 ? static_cast<char16_t>(std::tolower(c)) : c; }

/// Written where it stays. A copy would read several units in one step that were written one by one a moment
/// ago, and the processor would have to wait until they are in its caches.
template <class Texts>
void AddExtension(Texts& extensions, const char* extension) {
    if (!IsAscii(extension)) {
        extensions.push_back(fl::i18n::codecvt_ascii_to_ustring()(extension));
        return;
    }
    ustring& wide = extensions.emplace_back();
    for (; *extension != '\0'; ++extension)
        wide.push_back(static_cast<char16_t>(*extension));
}

} // namespace

ovSearchContextI::ovSearchContextI(const SearchQuestion& question)
    : m_path(question.path),
      m_scope(question.scope),
      m_caseSensitive(question.IsCaseSensitive()),
      m_givenExtensions(question.extensions) {
    TakeName(question.name);
    m_path->SearchBegins(); // last, since the end is told by the destructor only
}

const ovSearchContextI::Extensions& ovSearchContextI::GetExtensions() const {
    for (ovExtensionList next = std::exchange(m_givenExtensions, nullptr); next && *next; ++next)
        AddExtension(m_extensions, **next == '.' ? *next + 1 : *next);
    return m_extensions;
}

/// Most names have neither a dot nor a separator.
void ovSearchContextI::TakeName(std::u16string_view name) {
    m_text.assign(name.begin(), name.end());
    m_name = {m_text.data(), m_text.size()};
    // In the caller's text: the copy was only just written, and several units of it are read in one step
    // here.
    if (HoldsAny(name, u'.', u'/', separatorUnit)) {
        std::replace(m_text.begin(), m_text.end(), u'/', separatorUnit);
        m_name = SplitName(m_name);
    }
    if (!m_name.empty() && IsSentinel(m_name.front())) {
        m_prefixChar = m_name.front();
        m_name.remove_prefix(1);
    }
}

/// The first unit is never taken for a separator or a dot. @return the last element, without the extension.
std::u16string_view ovSearchContextI::SplitName(std::u16string_view name) {
    constexpr std::size_t none = std::u16string_view::npos;
    std::size_t dot = none;
    std::size_t separator = none;
    for (std::size_t i = name.size(); i-- > 1;) {
        if (name[i] == separatorUnit) {
            ++m_separatorCount;
            if (separator == none)
                separator = i;
        } else if (name[i] == u'.' && dot == none && separator == none) {
            dot = i;
        }
    }
    if (dot != none) {
        m_hasDot = true;
        m_extension = name.substr(dot + 1);
        name = name.substr(0, dot);
    }
    if (separator != none && separator + 1 < name.size()) {
        m_dirPart = name.substr(0, separator);
        name.remove_prefix(separator + 1);
    }
    return name;
}

void ovSearchContextI::SetMode(SearchMode mode) {
    if (mode == m_mode)
        return;
    m_mode = mode;
    m_categoryMask = masksOfMode[mode].categories;
    m_itemKindMask = masksOfMode[mode].itemKinds;
    if (mode != SearchModeDir || !m_hasDot)
        return;
    // What looked like an extension belongs to a directory's name.
    m_longerName = ustring(m_name).append(1, u'.').append(m_extension);
    m_name = m_longerName;
    m_extension = {};
    BuildIterators();
}

void ovSearchContextI::Step() {
    switch (m_advance) {
    case AdvanceState::Advance:
        m_current = NextItem();
        break;
    case AdvanceState::HoldOnce:
        m_advance = AdvanceState::Advance;
        break;
    case AdvanceState::AtEnd:
        m_current = nullptr;
        break;
    }
}

ovDir ovSearchContextI::CurrentAsDir() const {
    return ovDir(m_current && m_current->IsDirRecord() ? static_cast<PathAllDirItemInfo*>(m_current)
                                                       : nullptr);
}

ovDir ovSearchContextI::WalkToMatch(ustring& fullName, std::int32_t* match) {
    fullName.clear();
    for (Step(); m_current; Step()) {
        PathAllDirItemInfo* dir = m_current->GetParent();
        if (!dir)
            dir = static_cast<PathAllDirItemInfo*>(m_current);
        const std::int32_t rank = MatchExtension(*m_current);
        if (match)
            *match = rank;
        if (rank != 0 && QualifyItem(*dir, *m_current, fullName))
            return ovDir(dir);
    }
    fullName.clear();
    if (match)
        *match = 0;
    return ovDir(m_path->GetNullDir());
}

/// 0 for no match, anyExtension without a list, else the 1-based place in the list. An extension written in
/// the name has to match as well; the empty entry of a list stands for it and for files without extension.
std::int32_t ovSearchContextI::MatchExtension(const PathItemInfo& item) const {
    const char16_t* extension = item.GetExtension();
    const std::u16string_view text = extension ? extension : u"";
    const bool isWritten = extension && NamesEqual(text, m_extension, m_caseSensitive);

    const Extensions& wanted = GetExtensions();
    std::int32_t rank = wanted.empty() ? anyExtension : 0;
    for (std::size_t i = 0; i < wanted.size() && rank == 0; ++i) {
        const bool standsForWritten = wanted[i].empty() && !m_extension.empty() && isWritten;
        if (standsForWritten || NamesEqual(wanted[i], text, m_caseSensitive))
            rank = static_cast<std::int32_t>(i) + 1;
    }
    return m_extension.empty() || isWritten ? rank : 0;
}

bool ovSearchContextI::QualifyItem(const PathAllDirItemInfo& dir, const PathItemInfo& item,
                                   ustring& fullName) const {
    if (m_scope != SearchScopeDir && !IsQualifiedEnough(dir))
        return false;
    item.GetFullName(fullName);
    return MatchQualifier(fullName);
}

/// What lies inside a package is seen only by names with as many separators as it lies steps below its path
/// directory.
bool ovSearchContextI::IsQualifiedEnough(const PathAllDirItemInfo& dir) const {
    std::int32_t steps = 0;
    bool inPackage = false;
    for (const PathAllDirItemInfo* above = &dir; above && !above->IsPathDir(); above = above->GetParent()) {
        inPackage = inPackage || above->GetItemClass() == ItemClass::PackageDir;
        ++steps;
    }
    return !inPackage || m_separatorCount >= steps;
}

/// A sentinel before the name has to stand before the name's length from the end of the full name, extension
/// counted.
bool ovSearchContextI::MatchQualifier(std::u16string_view fullName) const {
    if (m_prefixChar != 0) {
        if (fullName.size() <= m_name.size() || fullName[fullName.size() - m_name.size() - 1] != m_prefixChar)
            return false;
    }
    if (m_dirPart.empty())
        return true;
    const std::size_t leafLength = FilePartOf(fullName).size();
    if (fullName.size() < leafLength + 2)
        return false;
    return MatchDirPart(fullName.substr(0, fullName.size() - leafLength - 1));
}

/// Compares from the end. Sentinels of the directory's path are optional in the name, and the match has to
/// begin where an element begins.
bool ovSearchContextI::MatchDirPart(std::u16string_view parent) const {
    std::size_t p = parent.size();
    std::size_t q = m_dirPart.size();
    while (q > 0 && p > 0) {
        const char16_t c = parent[p - 1];
        const char16_t d = m_dirPart[q - 1];
        if (IsSentinel(c) && !IsSentinel(d)) {
            --p;
            continue;
        }
        if (m_caseSensitive ? c != d : ToLower(c) != ToLower(d))
            return false;
        --p;
        --q;
    }
    if (q > 0)
        return false;
    if (p > 0 && IsSentinel(parent[p - 1]))
        --p;
    return p == 0 || IsNameSplit(parent[p - 1]);
}

ovDir ovSearchContextI::FindNextFile(ustring& fullName, std::int32_t* match) {
    SetMode(SearchModeFile);
    return WalkToMatch(fullName, match);
}

ovDir ovSearchContextI::FindNextUnspecified(ustring& fullName, std::int32_t* match) {
    SetMode(SearchModeUnspecified);
    return WalkToMatch(fullName, match);
}

ovDir ovSearchContextI::FindNextFileBounded(ustring& fullName, std::int32_t* match) {
    const ovDir none(m_path->GetNullDir());
    if (m_advance != AdvanceState::Advance || !m_current)
        return none;
    const ovDir parent(m_current->GetParent());
    const ovDir found = FindNextFile(fullName, match);
    if (found == parent)
        return found;
    m_advance = AdvanceState::HoldOnce;
    fullName.clear();
    ForgetMatch(match);
    return none;
}

ustring ovSearchContextI::GetCurrentItemInfo(std::int32_t& itemClass, std::int32_t& fileKind) {
    SetMode(SearchModeUnspecified);
    Step();
    ustring name;
    if (!m_current)
        return name;
    itemClass = ItemClassOf(*m_current);
    if (m_current->IsFile())
        fileKind = static_cast<std::int32_t>(static_cast<PathFileItemInfo*>(m_current)->GetFileKind());
    m_current->AppendName(name);
    return name;
}

} // namespace Quorrant::ovsel
