#include "linux_host/collected_names.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <boost/sort/pdqsort/pdqsort.hpp>
#include <cstring>

#include "linux_host/encoding.hpp"

namespace linux_host {

namespace {

static_assert(std::endian::native == std::endian::little, "the first byte is the lowest of a word");

using Word = std::uint64_t;

constexpr Word InEachByte(unsigned char byte) { return byte * Word{0x0101'0101'0101'0101}; }

/// Not zero if such a byte is in the word; the lowest mark is that of the first one.
constexpr Word MarksOf(Word word, char byte) {
    const Word differences = word ^ InEachByte(static_cast<unsigned char>(byte));
    return (differences - InEachByte(1)) & ~differences & InEachByte(0x80);
}

Word WordAt(const char* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Four bytes as four units.
constexpr Word Spread(Word bytes) {
    bytes = (bytes | bytes << 16) & 0x0000'FFFF'0000'FFFF;
    return (bytes | bytes << 8) & 0x00FF'00FF'00FF'00FF;
}

void Widen(Word bytes, char16_t* units) {
    const std::array<Word, 2> wide{Spread(bytes & 0xFFFF'FFFF), Spread(bytes >> 32)};
    std::memcpy(units, wide.data(), sizeof wide);
}

} // namespace

bool CollectedNames::IsSpellable(std::string_view name) {
    return name.find('\\') == std::string_view::npos && name.find(':') == std::string_view::npos;
}

void CollectedNames::Expect(std::size_t bytes) {
    constexpr std::size_t usualEntry = 32; // bytes, as the system packs them
    m_units.resize(m_used + bytes + Slack, boost::container::default_init);
    if (m_entries.empty()) {
        m_entries.reserve(bytes / usualEntry);
    }
}

/// Eight bytes at a time, in one pass that finds the end as well.
bool CollectedNames::Add(const char* name, unsigned short word) {
    Entry entry{0, m_used, 0, word};
    char16_t* units = m_units.data() + m_used;
    for (const char* next = name;; next += sizeof(Word), units += sizeof(Word)) {
        const Word bytes = WordAt(next);
        const Word end = MarksOf(bytes, '\0');
        const Word inName = ((end & -end) >> 7) - 1; // all of it if the end is not in it
        const Word odd = (bytes & InEachByte(0x80)) | MarksOf(bytes, '\\') | MarksOf(bytes, ':');
        if ((odd & inName) != 0) {
            return AddUnusual(name, word);
        }
        Widen(bytes, units);
        if (next == name) {
            entry.head = __builtin_bswap64(bytes & inName);
        }
        if (end != 0) {
            units += std::countr_zero(end) / 8;
            break;
        }
    }
    entry.length = static_cast<std::uint32_t>(units - (m_units.data() + m_used));
    m_used += entry.length + 1;
    m_entries.push_back(entry);
    return true;
}

bool CollectedNames::AddUnusual(std::string_view name, unsigned short word) {
    if (!IsSpellable(name)) {
        return false;
    }
    ustring wide;
    AppendWide(wide, name);
    wide.push_back(u'\0');
    std::copy(wide.begin(), wide.end(), m_units.data() + m_used);
    m_entries.push_back({0, m_used, static_cast<std::uint32_t>(wide.size() - 1), word});
    m_used += wide.size();
    m_isAscii = false;
    return true;
}

/// By the heads first: whole numbers, which can be sorted without branches that a processor cannot foresee.
/// Names that begin alike are then compared whole, and so are all of them if one is not ASCII.
std::vector<CollectedNames::HeadAndPlace> CollectedNames::InOrder() const {
    std::vector<HeadAndPlace> order;
    order.reserve(m_entries.size());
    for (const Entry& entry : m_entries) {
        const HeadAndPlace head = m_isAscii ? entry.head : 0;
        order.push_back(head << 64 | order.size());
    }
    boost::sort::pdqsort_branchless(order.begin(), order.end());
    const auto nameAt = [this](HeadAndPlace place) { return NameOf(At(place)); };
    for (auto begin = order.begin(), end = begin; begin != order.end(); begin = end) {
        end = std::find_if(begin + 1, order.end(),
                           [&](HeadAndPlace next) { return next >> 64 != *begin >> 64; });
        if (end - begin > 1) {
            std::sort(begin, end, [&](HeadAndPlace a, HeadAndPlace b) { return nameAt(a) < nameAt(b); });
        }
    }
    return order;
}

Listing CollectedNames::Sorted() const {
    Listing listing;
    listing.names.resize(m_used + 1 + Slack);
    listing.words.reserve(m_entries.size());
    char16_t* end = listing.names.data();
    for (const HeadAndPlace place : InOrder()) {
        const Entry& entry = At(place);
        const char16_t* const name = m_units.data() + entry.begin;
        // In whole steps, so that no length has to be told apart.
        for (std::size_t i = 0; i <= entry.length; i += sizeof(Word)) {
            std::memcpy(end + i, name + i, sizeof(Word) * sizeof(char16_t));
        }
        end += entry.length + 1;
        listing.words.push_back(entry.word);
    }
    listing.names.resize(m_used);
    listing.names.push_back(u'\0');
    return listing;
}

} // namespace linux_host
