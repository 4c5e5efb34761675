#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// @file
/// Names looked at four units at a time, or eight if they are as long as that. What is asked of every name of
/// every look-up must not cost a step for each unit.

static_assert(std::endian::native == std::endian::little, "the first unit is the lowest of a word");

constexpr std::size_t UnitsPerWord = 4;

/// A word with @p unit in each place.
constexpr std::uint64_t InEachPlace(char16_t unit) { return unit * std::uint64_t{0x0001'0001'0001'0001}; }

/// Not zero if such a unit is in the word.
constexpr std::uint64_t MarksOf(std::uint64_t word, char16_t unit) {
    const std::uint64_t differences = word ^ InEachPlace(unit);
    return (differences - InEachPlace(1)) & ~differences & InEachPlace(0x8000);
}

/// The four units from @p units on.
inline std::uint64_t WordAt(const char16_t* units) {
    std::uint64_t word = 0;
    std::memcpy(&word, units, sizeof word);
    return word;
}

/// Visits a name's words from the first on; in the last, those behind its end are zero.
template <class Visit>
[[gnu::always_inline]] inline void ForEachWord(std::u16string_view name, Visit visit) {
    constexpr std::size_t unitBits = 16;
    const std::size_t last = name.size() % UnitsPerWord;
    const char16_t* const end = name.data() + name.size() - last;
    for (const char16_t* units = name.data(); units != end; units += UnitsPerWord)
        visit(WordAt(units));
    if (last == 0)
        return;
    // Read as far back as a whole word goes, if there is one, since a few units cost more than a word.
    std::uint64_t word = 0;
    if (end != name.data())
        word = WordAt(end + last - UnitsPerWord) >> (UnitsPerWord - last) * unitBits;
    else
        for (std::size_t i = last; i-- > 0;)
            word = word << unitBits | end[i];
    visit(word);
}

constexpr std::size_t UnitsPerStep = 2 * UnitsPerWord;

/// Eight units side by side, which compilers keep in one register wherever there is one. What compares two
/// of them has all bits of a unit set where they are alike.
using UnitStep [[gnu::vector_size(UnitsPerStep * sizeof(char16_t))]] = std::uint16_t;

/// A step as two words, the first units in the first.
inline std::array<std::uint64_t, 2> WordsOf(UnitStep step) {
    std::array<std::uint64_t, 2> words{};
    std::memcpy(words.data(), &step, sizeof step);
    return words;
}

/// Visits a name's steps from the first on. The last goes back as far as a whole one needs, so that some
/// units come twice. @pre the name has as many units as a step
template <class Visit>
[[gnu::always_inline]] inline void ForEachStep(std::u16string_view name, Visit visit) {
    const std::size_t last = name.size() - UnitsPerStep;
    for (std::size_t at = 0;; at = std::min(at + UnitsPerStep, last)) {
        UnitStep step{};
        std::memcpy(&step, name.data() + at, sizeof step);
        visit(step);
        if (at == last)
            return;
    }
}

/// Does any of these units, none of which is NUL, stand in the name?
template <class... Units>
[[gnu::always_inline]] inline bool HoldsAny(std::u16string_view name, Units... units) {
    if (name.size() < UnitsPerStep) {
        std::uint64_t marks = 0;
        ForEachWord(name, [&](std::uint64_t word) { marks |= (MarksOf(word, units) | ...); });
        return marks != 0;
    }
    UnitStep marks{};
    ForEachStep(name, [&](UnitStep step) {
        marks |= (static_cast<UnitStep>(step == static_cast<std::uint16_t>(units)) | ...);
    });
    const auto words = WordsOf(marks);
    return (words[0] | words[1]) != 0;
}

/// Both halves of a product, so that every bit of the value moves every bit of the result.
constexpr std::uint64_t MixBits(std::uint64_t value) {
    __extension__ using Product = unsigned __int128;
    const Product product = static_cast<Product>(value) * 0x9e37'79b9'7f4a'7c15u;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

inline std::uint64_t HashUnits(std::u16string_view name) {
    std::uint64_t hash = MixBits(name.size() + 1);
    ForEachWord(name, [&hash](std::uint64_t word) { hash = MixBits(hash ^ word); });
    return hash;
}
