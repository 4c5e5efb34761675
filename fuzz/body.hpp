#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

/// @file
/// What the targets share. A target is one body, run by the fuzzer or, over the files of a corpus, by a test.

/// Runs one input; ends the process at an answer that breaks a rule. The answer has no meaning.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the process, so that the input is kept, unless the rule holds.
inline void Expect(bool holds, const char* rule) {
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

/// The same for two narrow texts that are to be one.
inline void ExpectSame(std::string_view a, std::string_view b, const char* rule) {
    if (a == b)
        return;
    std::fprintf(stderr, "\"%.*s\"\n\"%.*s\"\n", static_cast<int>(a.size()), a.data(),
                 static_cast<int>(b.size()), b.data());
    Expect(false, rule);
}

/// A buffer of exactly so many bytes, so that a byte read or written too far is noticed.
using Block = std::unique_ptr<char[]>;

inline Block Room(std::size_t bytes) { return Block(new char[bytes]); }

/// A terminated copy in at least @p room bytes.
inline Block Terminated(std::string_view text, std::size_t room = 0) {
    Block block = Room(room > text.size() ? room : text.size() + 1);
    std::memcpy(block.get(), text.data(), text.size());
    block[text.size()] = '\0';
    return block;
}

/// An input as lines of text, which keeps a corpus readable. Behind the last one all are empty.
class Lines {
  public:
    Lines(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

    bool AtEnd() const { return m_rest.empty(); }
    std::string_view Next() {
        const std::size_t end = m_rest.find('\n');
        const std::string_view line = m_rest.substr(0, end);
        m_rest.remove_prefix(end == m_rest.npos ? m_rest.size() : end + 1);
        return line;
    }
    /// The same as plain text can hold it: up to a NUL.
    std::string_view NextPlain() {
        const std::string_view line = Next();
        return line.substr(0, line.find('\0'));
    }

  private:
    std::string_view m_rest;
};
