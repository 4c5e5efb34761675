#pragma once

#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "linux_host/linux_host.hpp"

namespace linux_host {

/// The entries of one directory while it is listed: taken as bytes in the order of the disk, given out as a
/// listing, which is sorted by UTF-16 unit as the library compares names. The order of the bytes differs
/// beyond U+FFFF.
class CollectedNames {
  public:
    /// So many bytes may be read behind the NUL of a name, and so many units are kept behind those of names.
    static constexpr std::size_t Slack = 15;

    /// Names of so many bytes together at most, their NULs included, come next.
    void Expect(std::size_t bytes);
    /// @return false, and takes nothing, for a name that the grammar cannot spell.
    /// @pre the name was expected.
    bool Add(const char* name, unsigned short word);

    static bool IsSpellable(std::string_view name);

    std::size_t GetCount() const { return m_entries.size(); }
    /// The room for units that WriteSorted needs: those of the listing, and some behind them.
    std::size_t GetRoom() const { return m_used + 1 + Slack; }
    /// Writes what a Listing holds. @p words has room for one of each name.
    void WriteSorted(char16_t* names, unsigned short* words) const;
    Listing Sorted() const;

  private:
    struct Entry {
        /// The first eight bytes, the first of them foremost: nearly always all that need be compared. Of
        /// names of ASCII only.
        std::uint64_t head;
        std::size_t begin;
        std::uint32_t length; ///< the NUL not counted
        unsigned short word;
    };

    /// A usual directory has room enough in these, which are not for the heap.
    static constexpr std::size_t UsualNames = 256;
    template <class Value, std::size_t PerName>
    using Room = boost::container::small_vector<Value, PerName * UsualNames>;

    /// An entry's head above its place in m_entries.
    __extension__ using HeadAndPlace = unsigned __int128;

    Room<HeadAndPlace, 1> InOrder() const;
    const Entry& At(HeadAndPlace place) const { return m_entries[static_cast<std::size_t>(place)]; }
    bool AddUnusual(std::string_view name, unsigned short word);
    std::u16string_view NameOf(const Entry& entry) const {
        return {m_units.data() + entry.begin, entry.length};
    }

    Room<char16_t, 16> m_units; ///< names with a NUL behind each
    std::size_t m_used = 0;     ///< of them
    Room<Entry, 1> m_entries;   ///< ranges of m_units, so that sorting moves no text
    bool m_isAscii = true;
};

} // namespace linux_host
