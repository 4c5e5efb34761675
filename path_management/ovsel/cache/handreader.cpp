#include "ovsel/cache/handreader.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/text.hpp"
#include "ovsel/cache/cachelimits.hpp"
#include "ovsel/names/pathnames.hpp"

namespace Quorrant::ovsel {

namespace {

constexpr int EndOfFile = -1;
constexpr std::size_t MostNameBytes = 1280;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

/// @pre @p file stands at its beginning, and does so again.
bool IsTooLarge(std::FILE* file) {
    const long size = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
    std::rewind(file);
    return size < 0 || std::cmp_greater(size, MostCacheBytes);
}

/// The bytes of a file, line by line.
class LineSource {
  public:
    explicit LineSource(FileHandle file) : m_file(std::move(file)) {}

    /// The next byte, or EndOfFile. What stands behind a NUL in its line is not seen.
    int Take() {
        while (m_next == m_seenEnd)
            if (!BeginLine())
                return EndOfFile;
        return static_cast<unsigned char>(*m_next++);
    }

    /// Passes everything up to @p wanted and that too. @return false at the end of the file.
    bool SkipPast(char wanted) {
        do {
            // What is passed over is short: to call for a search of blocks would cost more.
            while (m_next != m_seenEnd)
                if (*m_next++ == wanted)
                    return true;
        } while (BeginLine());
        return false;
    }

    /// What comes before @p wanted, and passes that too: nearly always a part of one line, else joined in
    /// @p room. Stays until more is taken. @return nothing at the end of the file, or for more than @p most
    /// bytes.
    std::optional<std::string_view> TakeUntil(char wanted, std::size_t most, std::string& room) {
        room.clear();
        do {
            const char* const found = Find(wanted, m_seenEnd);
            const std::string_view piece(m_next, found ? found : m_seenEnd);
            if (room.size() + piece.size() > most)
                return std::nullopt;
            if (found)
                m_next = found + 1;
            if (found && room.empty())
                return piece;
            room.append(piece);
            if (found)
                return room;
        } while (BeginLine());
        return std::nullopt;
    }

    /// Passes exactly this, if it comes next in the line.
    bool Pass(std::string_view text) {
        if (std::string_view(m_next, m_seenEnd).substr(0, text.size()) != text)
            return false;
        m_next += text.size();
        return true;
    }

    /// Is what comes next exactly this? Takes as much as agrees and one more.
    bool Expect(std::string_view text) {
        if (Pass(text))
            return true;
        for (const char wanted : text)
            if (Take() != static_cast<unsigned char>(wanted))
                return false;
        return true;
    }

  private:
    /// Longer lines count as several.
    static constexpr std::ptrdiff_t MostLineBytes = 4094;
    static constexpr std::size_t BlockBytes = 64 * 1024;

    /// The first @p wanted from here to @p end, or null.
    const char* Find(char wanted, const char* end) const {
        return static_cast<const char*>(std::memchr(m_next, wanted, static_cast<std::size_t>(end - m_next)));
    }

    const char* FindLineEnd() const {
        const char* const most = m_next + std::min(m_filled - m_next, MostLineBytes);
        const char* const found = Find('\n', most);
        return found ? found + 1 : most;
    }

    /// May the line have been longer? A file that cannot be read to its end ends before such a line.
    bool IsCutShort() const {
        return m_lineEnd == m_filled && m_lineEnd - m_next < MostLineBytes &&
               (m_lineEnd == m_next || m_lineEnd[-1] != '\n');
    }

    /// @return false at the end of the file.
    bool BeginLine() {
        m_next = m_lineEnd;
        if (!m_isReadWhole && m_filled - m_next < MostLineBytes)
            FillBlock();
        m_lineEnd = FindLineEnd();
        if (m_hasFailed && IsCutShort())
            m_filled = m_lineEnd = m_next;
        const char* const nul = m_holdsNul ? Find('\0', m_lineEnd) : nullptr;
        m_seenEnd = nul ? nul : m_lineEnd;
        return m_next != m_lineEnd;
    }

    /// Moves what is left of the block to its beginning, and fills the rest from the file.
    void FillBlock() {
        const auto left = static_cast<std::size_t>(m_filled - m_next);
        std::memmove(m_block.data(), m_next, left);
        const std::size_t room = m_block.size() - left;
        const std::size_t taken = std::fread(m_block.data() + left, 1, room, m_file.get());
        m_isReadWhole = taken < room;
        m_hasFailed = std::ferror(m_file.get()) != 0;
        m_next = m_block.data();
        m_filled = m_next + left + taken;
        m_holdsNul = Find('\0', m_filled) != nullptr;
    }

    FileHandle m_file;
    std::vector<char> m_block = std::vector<char>(BlockBytes);
    const char* m_filled = m_block.data(); ///< the end of what has been read
    const char* m_next = m_filled;         ///< what is taken next
    const char* m_seenEnd = m_filled;      ///< the end of what is seen of the line
    const char* m_lineEnd = m_filled;      ///< where the next line begins
    bool m_holdsNul = false;               ///< the block does, somewhere
    bool m_isReadWhole = false;
    bool m_hasFailed = false;
};

/// Recursive descent over directory blocks. Every step answers false for contents that are not a cache's.
class ContentsReader {
  public:
    explicit ContentsReader(LineSource& source) : m_source(source) {}

    int DirectoryCount() const { return m_directoryCount; }

    bool ReadContents(CacheDirNode& node, int depth) {
        std::unique_ptr<CacheDirNode>* end = &node.m_firstChild;
        while (m_source.SkipPast('<')) {
            switch (const int letter = m_source.Take()) {
            case '/':
                node.CompleteNames();
                return true;
            case 'D':
                if (!ReadDirectory(node, end, depth + 1))
                    return false;
                ++m_directoryCount;
                break;
            case 'C':
            case 'F':
            case 'N':
            case 'U':
            case 'd':
                if (!ReadEntry(node, static_cast<char>(letter)))
                    return false;
                break;
            default:
                return false;
            }
        }
        return false;
    }

  private:
    bool ReadEntry(CacheDirNode& node, char letter) {
        const auto name = ReadName();
        if (!name)
            return false;
        node.AddName(*name, letter);
        return m_source.Expect("/>");
    }

    /// @p end is where the next child of @p parent goes.
    bool ReadDirectory(CacheDirNode& parent, std::unique_ptr<CacheDirNode>*& end, int depth) {
        const auto text = depth > MostCacheDepth ? std::nullopt : ReadName();
        if (!text)
            return false;
        std::optional<ustring> name = AsciiName(*text);
        if (!name)
            return true; // not entered: the lines of the block are read as the parent's
        *end = std::make_unique<CacheDirNode>(*std::move(name));
        CacheDirNode& child = **end;
        end = &child.m_nextSibling;
        if (!m_source.Expect(">") || !ReadContents(child, depth))
            return false;
        const std::string leaf = fl::i18n::codecvt_ustring_to_ascii()(ustring(FilePartOf(child.m_name)));
        parent.AddName(leaf, 'D');
        return m_source.Expect("D>");
    }

    /// The text between the next two double quotes; it stays until more is read.
    std::optional<std::string_view> ReadName() {
        // As caches are written; any other text in front of a name is passed over all the same.
        return m_source.Pass(" name=\"") || m_source.SkipPast('"')
                   ? m_source.TakeUntil('"', MostNameBytes, m_room)
                   : std::nullopt;
    }

    /// With `/` turned into `\`.
    static std::optional<ustring> AsciiName(std::string_view text) {
        try {
            ustring name = fl::i18n::codecvt_ascii_to_ustring()(text);
            std::replace(name.begin(), name.end(), u'/', u'\\');
            return name;
        } catch (const fl::i18n::CvtInvalidCharacter&) {
            return std::nullopt;
        }
    }

    LineSource& m_source;
    std::string m_room; ///< for a name that goes over lines
    int m_directoryCount = 0;
};

} // namespace

HandReading ReadCacheFileByHand(const char* fileName) {
    HandReading reading;
    FileHandle file(fl::filesystem::open_for_reading(fileName));
    reading.opened = file != nullptr;
    if (!reading.opened)
        return reading;
    if (IsTooLarge(file.get()))
        return reading;
    LineSource source(std::move(file));
    reading.reachedContents = source.SkipPast('>');
    if (!reading.reachedContents)
        return reading;
    auto root = std::make_unique<CacheDirNode>(u"CachePath");
    ContentsReader contents(source);
    if (contents.ReadContents(*root, 0))
        reading.root = std::move(root);
    reading.directoryCount = contents.DirectoryCount();
    return reading;
}

} // namespace Quorrant::ovsel
