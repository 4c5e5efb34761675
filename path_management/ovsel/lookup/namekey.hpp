#pragma once

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
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            m_words[i] = Lowered(WordAt(name, i));
            m_seen |= m_words[i];
            m_hash = Mix(m_hash ^ m_words[i]);
        }
    }

    /// What a key of the name would answer. Takes no memory: what is removed must be found without fail.
    struct Digest {
        explicit Digest(std::u16string_view name) : hash(Mix(name.size() + 1)) {
            for (std::size_t i = 0; i * unitsPerWord < name.size(); ++i) {
                const std::uint64_t word = Lowered(WordAt(name, i));
                seen |= word;
                hash = Mix(hash ^ word);
            }
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
        for (std::size_t i = 0; i < m_words.size(); ++i)
            if (Lowered(WordAt(name, i)) != m_words[i])
                return false;
        return true;
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
    static constexpr std::size_t usualWords = 64 / unitsPerWord;

    /// Four units of a name, those behind its end zero.
    static std::uint64_t WordAt(std::u16string_view name, std::size_t index) {
        std::uint64_t word = 0;
        const std::size_t left = name.size() - index * unitsPerWord;
        const char16_t* units = name.data() + index * unitsPerWord;
        if (left >= unitsPerWord)
            std::memcpy(&word, units, sizeof word);
        else
            std::memcpy(&word, units, left * sizeof *units);
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
