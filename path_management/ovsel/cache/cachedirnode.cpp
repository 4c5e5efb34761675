#include "ovsel/cache/cachedirnode.hpp"

#include <cstring>
#include <new>

#include "host_interfaces/utility.hpp"

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
    std::memcpy(m_names + m_namesLength, name.data(), name.size());
    m_namesLength += name.size() + 1;
    m_names[m_namesLength - 1] = '\0';
    m_names[m_namesLength] = '\0';
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
