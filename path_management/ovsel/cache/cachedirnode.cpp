#include "ovsel/cache/cachedirnode.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "host_interfaces/utility.hpp"
#include "ovsel/names/makeroom.hpp"

namespace Quorrant::ovsel {

namespace {

constexpr std::size_t BlockStep = 1024;

/// Grows a block in whole steps until it holds @p needed bytes.
void Reserve(char*& block, std::size_t& capacity, std::size_t needed) {
    if (needed <= capacity)
        return;
    const std::size_t grown = (needed + BlockStep - 1) / BlockStep * BlockStep;
    void* moved = HostRealloc(block, grown);
    if (!moved)
        throw std::bad_alloc();
    block = static_cast<char*>(moved);
    capacity = grown;
}

using Word = std::uint64_t;

constexpr Word InEachByte(unsigned char byte) { return byte * Word{0x0101'0101'0101'0101}; }

/// Every `/` among eight bytes becomes a `\`.
constexpr Word WithBackslashes(Word bytes) {
    const Word difference = bytes ^ InEachByte('/');
    const Word low = (difference & InEachByte(0x7f)) + InEachByte(0x7f);
    const Word slashes = ~(low | difference | InEachByte(0x7f)) >> 7; // 1 in each
    return bytes ^ slashes * ('/' ^ '\\');
}

void CopyWord(const char* from, char* to) {
    Word bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    bytes = WithBackslashes(bytes);
    std::memcpy(to, &bytes, sizeof bytes);
}

/// With `\` for each `/`. @return the end of the copy.
char* CopyName(std::string_view name, char* to) {
    if (name.size() < sizeof(Word))
        return std::replace_copy(name.begin(), name.end(), to, '/', '\\');
    // The last word goes back into what has been copied already, and writes the same there.
    const std::size_t last = name.size() - sizeof(Word);
    for (std::size_t at = 0; at < last; at += sizeof(Word))
        CopyWord(name.data() + at, to + at);
    CopyWord(name.data() + last, to + last);
    return to + name.size();
}

bool IsFile(char letter) { return letter == 'F' || letter == 'C' || letter == 'N'; }

} // namespace

CacheDirNode::~CacheDirNode() {
    HostFree(m_names);
    HostFree(m_letters);
    // One after the other: a directory may have more children than the stack has room for.
    while (m_nextSibling)
        m_nextSibling = std::move(m_nextSibling->m_nextSibling);
}

void CacheDirNode::AddName(std::string_view name, char letter) {
    // Room for the empty name at the end too.
    Reserve(m_names, m_namesCapacity, m_namesLength + name.size() + 2);
    Reserve(m_letters, m_lettersCapacity, m_lettersCount + 1);
    if (!IsFile(letter)) {
        MakeRoom(m_noFiles);
        m_noFiles.push_back(m_namesLength);
    }
    char* const end = CopyName(name, m_names + m_namesLength);
    end[0] = '\0';
    end[1] = '\0';
    m_namesLength += name.size() + 1;
    m_letters[m_lettersCount++] = letter;
}

void CacheDirNode::CompleteNames() {
    ++m_namesLength;
    if (m_names)
        return;
    ++m_namesLength;
    m_names = static_cast<char*>(HostCalloc(m_namesLength, 1));
    if (!m_names)
        throw std::bad_alloc();
    m_namesCapacity = m_namesLength;
}

} // namespace Quorrant::ovsel
