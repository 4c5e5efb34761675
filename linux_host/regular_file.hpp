#pragma once

#include <memory>
#include <streambuf>
#include <string>
#include <utility>

/// @file
/// Regular files as descriptors and as stream buffers.

namespace linux_host {

/// Opens a regular file and nothing else, so that nobody waits for the other end of a pipe or rewinds a tape.
/// @p flags as of open(2), O_TRUNC excepted: a file is emptied when it is known to be one.
/// @return a close-on-exec descriptor, the caller's to close; or -1 with the reason in errno, which is EISDIR
/// or ENOTSUP for what is no regular file.
int OpenRegularFile(const std::string& path, int flags);

/// Owns a descriptor, or none if the number is negative.
class Descriptor {
  public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    ~Descriptor();
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return m_number; }

  private:
    int m_number;
};

// Both buffers take over the descriptor and throw the storage layer's Exception, which streams turn into
// badbit; @p name stands in its text. A file of the standard library would hide the reason.

std::unique_ptr<std::streambuf> ReadingBuffer(Descriptor file, std::string name);

/// What a failed write leaves in the buffer is tried again by the next one, so that the file has no gaps. The
/// destructor writes what is left, and failures there are lost.
std::unique_ptr<std::streambuf> WritingBuffer(Descriptor file, std::string name);

} // namespace linux_host
