#include "tools/ovsel/cache_file.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <unordered_set>

#include <fmt/format.h>

#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/output.hpp"
#include "tools/ovsel/regular_file.hpp"

namespace tool {
namespace {

constexpr std::string_view Version = "1.2";
constexpr std::string_view NoSuchLine = "no line of a path cache, or not indented as it must be here";

/// Takes @p head and @p tail off a text that has both.
std::optional<std::string_view> Between(std::string_view text, std::string_view head, std::string_view tail) {
    if (text.size() < head.size() + tail.size() || !text.starts_with(head) || !text.ends_with(tail))
        return std::nullopt;
    return text.substr(head.size(), text.size() - head.size() - tail.size());
}

/// Would the name lead out of the prefix, or be read as another one?
bool IsFolderName(std::string_view name) {
    for (std::size_t begin = 0; begin <= name.size();) {
        const std::size_t end = std::min(name.find('/', begin), name.size());
        const std::string_view element = name.substr(begin, end - begin);
        if (element.empty() || element == "." || element == "..")
            return false;
        begin = end + 1;
    }
    return true;
}

class Parser {
  public:
    Parser(std::string_view text, std::string_view file) : m_rest(text), m_file(file) {}

    CacheFile Parse() {
        CacheFile cache;
        ParseHeader(cache);
        while (NextLine() != "</Quorrant>")
            cache.folders.push_back(ParseFolder(1, ""));
        if (!m_rest.empty())
            Fail("nothing may stand behind the end", 1);
        return cache;
    }

  private:
    /// To the line that is being read. @p later so many lines behind it are meant instead.
    [[noreturn]] void Fail(std::string_view reason, std::size_t later = 0) const {
        throw FindingError(fmt::format("{}: line {}: {}", Shown(m_file), m_number + later, reason));
    }

    std::string_view NextLine() {
        ++m_number;
        const std::size_t end = m_rest.find('\n');
        if (end == std::string_view::npos)
            Fail(m_rest.empty() ? "missing: the file has been cut off" : "cut off");
        m_line = m_rest.substr(0, end);
        m_rest.remove_prefix(end + 1);
        return m_line;
    }

    void ParseHeader(CacheFile& cache) {
        const auto attributes =
            m_rest.starts_with("<Quorrant ")
                ? Between(NextLine(), "<Quorrant type=\"Path Cache File\" version=\"", "\">")
                : std::nullopt;
        constexpr std::string_view middle = "\" date=\"";
        const std::size_t at = attributes ? attributes->find(middle) : std::string_view::npos;
        if (at == std::string_view::npos) {
            m_number = 1;
            Fail("this is no path cache");
        }
        cache.version = attributes->substr(0, at);
        cache.date = attributes->substr(at + middle.size());
        if (cache.version != Version)
            Fail(fmt::format("version {}; only {} is known", Shown(cache.version), Version));
        CheckName(cache.date);
    }

    /// The line has been read; what follows up to the folder's end is read here.
    CacheFolder ParseFolder(std::size_t level, std::string_view parent) {
        const auto name = Between(Indented(level), "<D name=\"", "\">");
        if (!name)
            Fail(NoSuchLine);
        CacheFolder folder{std::string(CheckName(*name)), {}, {}};
        CheckFolder(folder.name, level, parent);
        for (NextLine(); Indented(level) != "</D>"; NextLine())
            if (Indented(level + 1).starts_with("<D "))
                folder.folders.push_back(ParseFolder(level + 1, folder.name));
            else
                folder.entries.push_back(ParseEntry(level + 1));
        return folder;
    }

    CacheEntry ParseEntry(std::size_t level) const {
        const std::string_view body = Indented(level);
        const char letter = body.size() > 1 ? body[1] : '\0';
        const auto name = std::string_view("dFCNU").find(letter) == std::string_view::npos
                              ? std::nullopt
                              : Between(body, std::string{'<', letter} + " name=\"", "\"/>");
        if (!name)
            Fail(NoSuchLine);
        if (name->find('/') != std::string_view::npos)
            Fail("an entry has a bare name, without its folder");
        return {letter, std::string(CheckName(*name))};
    }

    /// The line behind exactly so many blanks, else nothing.
    std::string_view Indented(std::size_t level) const {
        return m_line.find_first_not_of(' ') == level ? m_line.substr(level) : std::string_view();
    }

    std::string_view CheckName(std::string_view name) const {
        if (const char* reason = name.empty() ? "is empty" : WhyNotCarried(name))
            Fail(fmt::format("the name {}", reason));
        return name;
    }

    void CheckFolder(const std::string& name, std::size_t level, std::string_view parent) {
        if (level > MostCacheLevels)
            Fail(fmt::format("nested deeper than {} folders", MostCacheLevels));
        if (!IsFolderName(name))
            Fail("the name of a folder leads from the prefix downwards");
        if (level > 1 && name.substr(0, name.rfind('/')) != parent)
            Fail("the folder does not lie in the one around it");
        if (!m_seen.insert(name).second)
            Fail(fmt::format("the folder {} has been there before", Shown(name)));
    }

    std::string_view m_rest;
    std::string_view m_line;
    std::string_view m_file;
    std::size_t m_number = 0;
    std::unordered_set<std::string> m_seen;
};

} // namespace

std::string_view LeafOf(const CacheFolder& folder) {
    return std::string_view(folder.name).substr(folder.name.rfind('/') + 1);
}

CacheCounts CountAll(const std::vector<CacheFolder>& folders) {
    CacheCounts counts{folders.size(), 0};
    for (const CacheFolder& folder : folders) {
        const CacheCounts below = CountAll(folder.folders);
        counts.folders += below.folders;
        counts.entries += below.entries + folder.entries.size();
    }
    return counts;
}

const char* WhyNotCarried(std::string_view name) {
    // The format has no way to escape anything.
    if (name.find_first_of("\"&<") != std::string_view::npos)
        return "holds one of \" & <";
    if (name.find('\\') != std::string_view::npos)
        return "holds a \\";
    if (std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; }))
        return "is not ASCII";
    if (std::any_of(name.begin(), name.end(), [](char c) { return c < 0x20 || c == 0x7F; }))
        return "holds a control character";
    return name.size() > MostCacheName ? "is longer than 1280 bytes" : nullptr;
}

CacheFile ParseCache(std::string_view text, std::string_view file) { return Parser(text, file).Parse(); }

CacheFile ReadCache(const std::string& path, std::string_view file) {
    const Descriptor opened(OpenRegular(path));
    const auto text = *opened < 0 ? std::nullopt : ReadUpTo(*opened, MostCacheBytes + 1);
    if (!text) {
        const char* reason = errno == ENOTSUP ? "this is no regular file" : std::strerror(errno);
        throw EnvironmentError(fmt::format("{}: {}", Shown(file), reason));
    }
    if (text->size() > MostCacheBytes)
        throw FindingError(fmt::format("{}: too large for a path cache", Shown(file)));
    return ParseCache(*text, file);
}

} // namespace tool
