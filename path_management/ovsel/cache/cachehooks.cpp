#include "ovsel/cache/cachehooks.hpp"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/cache/cachestate.hpp"
#include "ovsel/cache/specialnames.hpp"
#include "ovsel/frame/iohooks.hpp"
#include "ovsel/names/pathnames.hpp"

namespace Quorrant::ovsel {

namespace {

struct FreeUnits {
    void operator()(void* units) const { HostFree(units); }
};

template <class Unit>
std::unique_ptr<Unit[], FreeUnits> AllocateUnits(std::size_t count) {
    // At least one, so that an empty answer is not taken for a lack of memory.
    void* const units = HostMallocWithCheck(std::max<std::size_t>(count, 1) * sizeof(Unit));
    return std::unique_ptr<Unit[], FreeUnits>(static_cast<Unit*>(units));
}

constexpr unsigned short FileWord = 0x8000;

unsigned short WordOf(char letter) {
    switch (letter) {
    case 'C':
        return 0x8001;
    case 'N':
        return 0x8002;
    case 'F':
        return 0x8000;
    case 'D':
    case 'd':
        return 0x4000;
    default:
        return 0;
    }
}

/// A byte as a unit, with its sign, as it has always been: what is beyond ASCII is not that name any more.
char16_t UnitOf(char byte) { return static_cast<char16_t>(static_cast<signed char>(byte)); }

/// Takes what comes again of special directories out of a listing, in place.
void DropRepeated(char16_t* names, unsigned short* words, std::size_t count, bool caseSensitive) {
    SpecialNames special(caseSensitive);
    char16_t* end = names;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::u16string_view name(names);
        names += name.size() + 1;
        if ((words[i] & FileWord) == 0 && special.IsRepeated(name))
            continue;
        std::memmove(end, name.data(), (name.size() + 1) * sizeof(char16_t));
        end += name.size() + 1;
        words[kept++] = words[i];
    }
    *end = u'\0';
}

bool HasRepeated(const CacheDirNode& node, const char16_t* names, bool caseSensitive) {
    SpecialNames special(caseSensitive);
    return std::any_of(node.m_noFiles.begin(), node.m_noFiles.end(),
                       [&](std::size_t begin) { return special.IsRepeated(names + begin); });
}

/// What a listing hook hands out for a directory of the cache.
char16_t* HandOut(const CacheDirNode& node, bool caseSensitive, unsigned short** attributes) {
    auto names = AllocateUnits<char16_t>(node.m_namesLength);
    auto words = AllocateUnits<unsigned short>(node.m_lettersCount);
    std::transform(node.m_names, node.m_names + node.m_namesLength, names.get(), UnitOf);
    std::transform(node.m_letters, node.m_letters + node.m_lettersCount, words.get(), WordOf);
    if (HasRepeated(node, names.get(), caseSensitive))
        DropRepeated(names.get(), words.get(), node.m_lettersCount, caseSensitive);
    if (attributes)
        *attributes = words.release();
    return names.release();
}

void TraceName(const char* format, const ustring& name) {
    if (CacheState::Get().trace)
        HostPrintf(format, PrintableName(name).c_str());
}

bool HasDotInLastElement(const ustring& name) {
    const std::size_t dot = name.rfind(u'.');
    return dot != ustring::npos && name.find(u'\\', dot) == ustring::npos;
}

bool IsDirectoryByForm(const ustring& name) {
    const ustring native = fl::filesystem::make_native_form(name, true);
    const auto leaf = FilePartOf(native);
    return leaf.starts_with(u'@') || leaf == u"private";
}

/// What can be said without the disk; nothing if that must be asked.
std::optional<bool> IsDirectoryUnasked(const ovPath& path, const ustring& name) {
    if (MatchesCachePrefix(path, name)) {
        if (HasDotInLastElement(name))
            return false;
        TraceName("Is %s a directory?...\n", name);
        if (FindInCache(path, name))
            return true;
    }
    TraceName("Is %s a directory?...\n", name);
    if (IsDirectoryByForm(name))
        return true;
    return std::nullopt;
}

} // namespace

char16_t* CacheReadDirectory(ovPath path, const ustring& name, unsigned short** attributes) {
    const CacheState& state = CacheState::Get();
    TraceName("Looking for contents of %s...\n", name);
    if (MatchesCachePrefix(path, name)) {
        if (const auto node = FindInCache(path, name))
            return HandOut(*node, IsCaseSensitive(path), attributes);
        if (state.IsTalkative() || state.report)
            HostPrintf("%s not found in Toolbox Path Cache\n", PrintableName(name).c_str());
    }
    if (state.trace)
        HostPrintf(" not in cache...");
    return IOHooks::Defaults().m_readDirectoryFcn(path, name, attributes);
}

ovDirAccessibility CacheGetAccessibility(ovPath path, const ustring& name) {
    TraceName("Is %s accessible?...\n", name);
    if (CacheIsDirectory(path, name))
        return ovDirAccessible;
    TraceName("%s not in cache, using file system IsAccessible.\n", name);
    return IOHooks::Defaults().m_dirAccessibilityFcn(path, name);
}

bool CacheIsDirectory(ovPath path, const ustring& name) {
    const std::optional<bool> known = IsDirectoryUnasked(path, name);
    return known ? *known : IOHooks::Defaults().m_dirExistsFcn(path, name);
}

long CacheGetFileTime(ovPath path, const ustring& name) {
    if (IsDirectoryUnasked(path, name).value_or(false))
        return 0;
    const ustring directory(DirPartOf(name));
    if (IsDirectoryUnasked(path, directory).value_or(false))
        return 0;
    return IOHooks::Defaults().m_fileTimeFcn(path, name);
}

} // namespace Quorrant::ovsel
