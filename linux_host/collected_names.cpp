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

/// Sixteen bytes side by side, which compilers keep in one register wherever there is one, and halves of
/// them. What compares two of them has all bits of a byte set where they are alike.
constexpr std::size_t StepSize = CollectedNames::Slack + 1;
using Step [[gnu::vector_size(StepSize)]] = std::uint8_t;
using HalfStep [[gnu::vector_size(StepSize / 2)]] = std::uint8_t;
using WideHalf [[gnu::vector_size(StepSize)]] = std::uint16_t;

Step StepAt(const char* bytes) {
    Step step{};
    std::memcpy(&step, bytes, sizeof step);
    return step;
}

/// The first bytes in the first word.
std::array<Word, 2> WordsOf(Step step) {
    std::array<Word, 2> words{};
    std::memcpy(words.data(), &step, sizeof step);
    return words;
}

/// All bits below the lowest that is set, or all if none is.
constexpr Word Below(Word bits) { return (bits & -bits) - 1; }

/// Bytes as units.
void Widen(const char* bytes, char16_t* units) {
    for (std::size_t at = 0; at < StepSize; at += sizeof(HalfStep)) {
        HalfStep half{};
        std::memcpy(&half, bytes + at, sizeof half);
        const auto wide = __builtin_convertvector(half, WideHalf);
        std::memcpy(units + at, &wide, sizeof wide);
    }
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

/// Sixteen bytes at a time, in one pass that finds the end as well.
bool CollectedNames::Add(const char* name, unsigned short word) {
    Entry entry{0, m_used, 0, word};
    char16_t* units = m_units.data() + m_used;
    for (const char* next = name;; next += StepSize, units += StepSize) {
        const Step bytes = StepAt(next);
        const auto [end, laterEnd] = WordsOf(static_cast<Step>(bytes == 0));
        const auto [odd, laterOdd] =
            WordsOf(static_cast<Step>((bytes >= 0x80) | (bytes == '\\') | (bytes == ':')));
        // What lies behind the end is not the name's.
        const Word inName = Below(end);
        const Word laterInName = end != 0 ? 0 : Below(laterEnd);
        if (((odd & inName) | (laterOdd & laterInName)) != 0) {
            return AddUnusual(name, word);
        }
        Widen(next, units);
        if (next == name) {
            entry.head = __builtin_bswap64(WordsOf(bytes)[0] & inName);
        }
        if ((end | laterEnd) != 0) {
            units += (end != 0 ? std::countr_zero(end) : 64 + std::countr_zero(laterEnd)) / 8;
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
CollectedNames::Room<CollectedNames::HeadAndPlace, 1> CollectedNames::InOrder() const {
    Room<HeadAndPlace, 1> order;
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

void CollectedNames::WriteSorted(char16_t* names, unsigned short* words) const {
    constexpr std::size_t CopiedUnits = 8;
    static_assert(CopiedUnits <= Slack + 1);
    for (const HeadAndPlace place : InOrder()) {
        const Entry& entry = At(place);
        const char16_t* const name = m_units.data() + entry.begin;
        // In whole steps, so that no length has to be told apart.
        for (std::size_t i = 0; i <= entry.length; i += CopiedUnits) {
            std::memcpy(names + i, name + i, CopiedUnits * sizeof(char16_t));
        }
        names += entry.length + 1;
        *words++ = entry.word;
    }
    *names = u'\0';
}

Listing CollectedNames::Sorted() const {
    Listing listing;
    listing.names.resize(GetRoom());
    listing.words.resize(GetCount());
    WriteSorted(listing.names.data(), listing.words.data());
    listing.names.resize(m_used + 1);
    return listing;
}

} // namespace linux_host
