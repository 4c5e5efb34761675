#pragma once

#include <cstdint>
#include <string_view>

#include <boost/container/small_vector.hpp>

#include "ovsel/names/unitwords.hpp"

/// A name as the index looks for it, and its hash: ASCII capitals lowered, every other unit as it is. Made in
/// one pass, four units at a time; a name of up to 64 units stays on the stack.
class NameKey {
  public:
    explicit NameKey(std::u16string_view name)
        : m_words((name.size() + UnitsPerWord - 1) / UnitsPerWord, boost::container::default_init),
          m_size(name.size()),
          m_digest(name, [next = m_words.data()](std::uint64_t word) mutable { *next++ = word; }) {}

    /// What a key of the name would answer. Takes no memory: what is removed must be found without fail.
    struct Digest {
        explicit Digest(std::u16string_view name) : Digest(name, [](std::uint64_t) {}) {}
        /// @p use gets each word, lowered.
        template <class Use>
        Digest(std::u16string_view name, Use use) {
            // Not in the fields, which would be written and read again at each word.
            std::uint64_t allHash = MixBits(name.size() + 1);
            std::uint64_t allSeen = 0;
            ForEachWord(name, [&](std::uint64_t word) {
                const std::uint64_t lowered = Lowered(word);
                use(lowered);
                allSeen |= lowered;
                allHash = MixBits(allHash ^ lowered);
            });
            hash = allHash;
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
        ForEachWord(name, [&](std::uint64_t word) { difference |= Lowered(word) ^ *next++; });
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

  private:
    static constexpr std::uint64_t beyondAscii = InEachPlace(0xff80);
    static constexpr std::size_t usualWords = 64 / UnitsPerWord;

    boost::container::small_vector<std::uint64_t, usualWords> m_words;
    std::size_t m_size;
    Digest m_digest;
};
