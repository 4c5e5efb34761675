#pragma once

#include <optional>
#include <string>

namespace tool {

/// Owns a descriptor; a negative one stands for none.
class Descriptor {
  public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int operator*() const { return m_value; }

  private:
    int m_value;
};

/// Opens a regular file for reading and nothing else, and never waits: a link may lead to a pipe that nobody
/// writes to.
/// @return a descriptor, the caller's to close; or a negative number with the reason in errno, which is
/// EISDIR or ENOTSUP for what is no regular file.
int OpenRegular(const std::string& path);

/// Reads from where @p file stands to its end, and no more than @p most bytes.
/// @return nothing, with the reason in errno, if it cannot be read.
std::optional<std::string> ReadUpTo(int file, std::size_t most);

} // namespace tool
