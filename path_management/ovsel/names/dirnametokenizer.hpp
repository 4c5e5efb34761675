#pragma once

#include <algorithm>
#include <string_view>

#include <boost/container/small_vector.hpp>

/// Walks the elements of a name; runs of separators count as one. Works on a copy, so that a result may be
/// written over the name. A name of up to 254 characters costs no allocation.
template <class Char, Char Separator>
class DirNameTokenizer {
  public:
    using View = std::basic_string_view<Char>;

    explicit DirNameTokenizer(View name) : m_name(name.size() + 2) {
        std::copy(name.begin(), name.end(), m_name.begin());
        Rewind();
    }
    DirNameTokenizer(const DirNameTokenizer&) = delete;
    DirNameTokenizer& operator=(const DirNameTokenizer&) = delete;

    /// Back to the first element.
    void Rewind() { Take(m_name.data()); }

    /// To the next element. @pre not AtEnd()
    void Next() { Take(m_end + 1); }

    bool AtEnd() const { return m_start == m_end; }
    bool BeginsWith(char16_t sentinel) const { return *m_start == static_cast<Char>(sentinel); }

    /// The element without its sentinel; lives as long as the tokenizer. @pre not AtEnd()
    View TextBehindSentinel() const {
        return View(m_start + 1, static_cast<std::size_t>(m_end - m_start - 1));
    }

  private:
    void Take(const Char* from) {
        while (*from == Separator)
            ++from;
        m_start = m_end = from;
        while (*m_end != Separator && *m_end != Char())
            ++m_end;
    }

    /// The name and two terminators: the step from the last element lands on the second.
    boost::container::small_vector<Char, 256> m_name;
    const Char* m_start = nullptr;
    const Char* m_end = nullptr;
};

/// File names. A byte in the middle of a multi-byte character may not look like the separator.
using PlainDirNameTokenizer = DirNameTokenizer<char, '\\'>;
/// Paths of storage locations.
using WideDirNameTokenizer = DirNameTokenizer<char16_t, u'/'>;
