#pragma once

#include <bit>
#include <cstdint>
#include <string_view>
#include <utility>

#include <boost/container/small_vector.hpp>

#include "ovsel/names/unitwords.hpp"

/// A name as the index looks for it, and its hash: ASCII capitals lowered, every other unit as it is. Made in
/// one pass, four or eight units at a time; a name of up to 64 units stays on the stack.
class NameKey {
  public:
    explicit NameKey(std::u16string_view name)
        : m_words(CountWords(name.size()), boost::container::default_init),
          m_size(name.size()),
          m_digest(name, [next = m_words.data()](std::uint64_t word) mutable { *next++ = word; }) {}

    /// What a key of the name would answer. Takes no memory: what is removed must be found without fail.
    struct Digest {
        explicit Digest(std::u16string_view name) : Digest(name, [](std::uint64_t) {}) {}
        /// @p use gets each word, lowered.
        template <class Use>
        Digest(std::u16string_view name, Use use) {
            // Not in the fields, which would be written and read again at each word. In two that take turns,
            // so that a word need not wait for the one before it.
            std::uint64_t thisHash = name.size() + 1;
            std::uint64_t nextHash = 0;
            std::uint64_t allSeen = 0;
            ForEachLowered(name, [&](std::uint64_t word) {
                use(word);
                allSeen |= word;
                thisHash = std::exchange(nextHash, MixBits(thisHash ^ word));
            });
            hash = MixBits(thisHash + std::rotl(nextHash, 32));
            seen = allSeen;
        }
        bool IsAscii() const { return (seen & beyondAscii) == 0; }

        std::uint64_t hash;
        std::uint64_t seen; ///< every bit that any word has
    };

    std::uint64_t GetHash() const { return m_digest.hash; }
    bool IsAscii() const { return m_digest.IsAscii(); }

    /// Is this the key of @p name?
    bool IsKeyOf(std::u16string_view name) const {
        if (name.size() != m_size)
            return false;
        std::uint64_t difference = 0;
        const std::uint64_t* next = m_words.data();
        ForEachLowered(name, [&](std::uint64_t word) { difference |= word ^ *next++; });
        return difference == 0;
    }

    /// ASCII capitals lowered in each of four units.
    static constexpr std::uint64_t Lowered(std::uint64_t units) {
        const std::uint64_t low = units & InEachPlace(0x7fff);
        // The top bit of a unit tells whether it reaches the bound; below it there is room for the carry.
        const std::uint64_t fromA = low + InEachPlace(0x8000 - u'A');
        const std::uint64_t pastZ = low + InEachPlace(0x8000 - (u'Z' + 1));
        const std::uint64_t capitals = (fromA & ~pastZ & ~units) & InEachPlace(0x8000);
        return units | capitals >> 10;
    }

    /// The same in each of eight.
    static UnitStep Lowered(UnitStep units) {
        constexpr std::uint16_t beforeA = u'A' - 1;
        constexpr std::uint16_t behindZ = u'Z' + 1;
        const auto isCapital = static_cast<UnitStep>((units > beforeA) & (units < behindZ));
        return units | (isCapital & (u'a' - u'A'));
    }

  private:
    /// How many words ForEachLowered visits.
    static constexpr std::size_t CountWords(std::size_t units) {
        return units < UnitsPerStep ? (units + UnitsPerWord - 1) / UnitsPerWord
                                    : (units + UnitsPerStep - 1) / UnitsPerStep * 2;
    }

    /// Visits words that hold all units of the name, lowered, and nothing else but zeros: two names of one
    /// length have one key if all their words are equal.
    template <class Visit>
    [[gnu::always_inline]] static void ForEachLowered(std::u16string_view name, Visit visit) {
        if (name.size() < UnitsPerStep) {
            ForEachWord(name, [&](std::uint64_t word) { visit(Lowered(word)); });
            return;
        }
        ForEachStep(name, [&](UnitStep step) {
            const auto words = WordsOf(Lowered(step));
            visit(words[0]);
            visit(words[1]);
        });
    }

    static constexpr std::uint64_t beyondAscii = InEachPlace(0xff80);
    static constexpr std::size_t usualWords = 64 / UnitsPerWord;

    boost::container::small_vector<std::uint64_t, usualWords> m_words;
    std::size_t m_size;
    Digest m_digest;
};
