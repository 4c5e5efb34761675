#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <boost/container/small_vector.hpp>

/// A name as the index looks for it, and its hash: ASCII capitals lowered, every other unit as it is. Made in
/// one pass, four units at a time; a name of up to 64 units stays on the stack.
class NameKey {
  public:
    explicit NameKey(std::u16string_view name)
        : m_words((name.size() + unitsPerWord - 1) / unitsPerWord, boost::container::default_init),
          m_size(name.size()),
          m_hash(Mix(name.size() + 1)) {
        std::uint64_t* next = m_words.data();
        ForEachWord(name, [&](std::uint64_t word) {
            *next = Lowered(word);
            m_seen |= *next;
            m_hash = Mix(m_hash ^ *next++);
        });
    }

    /// What a key of the name would answer. Takes no memory: what is removed must be found without fail.
    struct Digest {
        explicit Digest(std::u16string_view name) : hash(Mix(name.size() + 1)) {
            ForEachWord(name, [this](std::uint64_t word) {
                seen |= Lowered(word);
                hash = Mix(hash ^ Lowered(word));
            });
        }
        bool IsAscii() const { return (seen & beyondAscii) == 0; }

        std::uint64_t hash;
        std::uint64_t seen = 0; ///< every bit that any word has
    };

    std::uint64_t GetHash() const { return m_hash; }
    bool IsAscii() const { return (m_seen & beyondAscii) == 0; }

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
        constexpr std::uint64_t each = 0x0001'0001'0001'0001;
        const std::uint64_t low = units & (0x7fff * each);
        // The top bit of a unit tells whether it reaches the bound; below it there is room for the carry.
        const std::uint64_t fromA = low + (0x8000 - u'A') * each;
        const std::uint64_t pastZ = low + (0x8000 - (u'Z' + 1)) * each;
        const std::uint64_t capitals = (fromA & ~pastZ & ~units) & (0x8000 * each);
        return units | capitals >> 10;
    }

  private:
    static constexpr std::uint64_t beyondAscii = 0xff80'ff80'ff80'ff80;
    static constexpr std::size_t unitsPerWord = 4;
    static constexpr std::size_t unitBits = 16;
    static constexpr std::size_t usualWords = 64 / unitsPerWord;

    /// Visits a name's words from the first on, four units each; in the last, those behind its end are zero.
    template <class Visit>
    static void ForEachWord(std::u16string_view name, Visit visit) {
        const std::size_t last = name.size() % unitsPerWord;
        const char16_t* const end = name.data() + name.size() - last;
        for (const char16_t* units = name.data(); units != end; units += unitsPerWord)
            visit(WordAt(units));
        if (last == 0)
            return;
        // Read as far back as a whole word goes, if there is one, since a few units cost more than a word.
        std::uint64_t word = 0;
        if (end != name.data())
            word = WordAt(end + last - unitsPerWord) >> (unitsPerWord - last) * unitBits;
        else
            for (std::size_t i = last; i-- > 0;)
                word = word << unitBits | end[i];
        visit(word);
    }

    static std::uint64_t WordAt(const char16_t* units) {
        static_assert(std::endian::native == std::endian::little, "the first unit is the lowest of a word");
        std::uint64_t word = 0;
        std::memcpy(&word, units, sizeof word);
        return word;
    }

    /// Both halves of a product, so that every bit of a word moves every bit of the hash.
    static std::uint64_t Mix(std::uint64_t value) {
        __extension__ using Product = unsigned __int128;
        const Product product = static_cast<Product>(value) * 0x9e37'79b9'7f4a'7c15u;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    boost::container::small_vector<std::uint64_t, usualWords> m_words;
    std::size_t m_size;
    std::uint64_t m_hash;
    std::uint64_t m_seen = 0; ///< every bit that any word has
};
