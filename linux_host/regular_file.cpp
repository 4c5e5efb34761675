#include "linux_host/regular_file.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host_interfaces/storage.hpp"

namespace linux_host {

namespace {

/// A cache file of some megabytes takes a hundred calls or so.
using Bytes = std::array<char, 65536>;

/// Calls until no signal cuts the call short.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

class Reader : public std::streambuf {
  public:
    Reader(Descriptor file, std::string name) : m_file(std::move(file)), m_name(std::move(name)) {}

  protected:
    int_type underflow() override {
        const ssize_t length =
            Uninterrupted([&] { return ::read(m_file.Number(), m_bytes.data(), m_bytes.size()); });
        if (length < 0) {
            throw foundation::storage::vfs::Exception(m_name + ": " + std::strerror(errno));
        }
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + length);
        return length == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

  private:
    Descriptor m_file;
    std::string m_name;
    Bytes m_bytes;
};

class Writer : public std::streambuf {
  public:
    Writer(Descriptor file, std::string name) : m_file(std::move(file)), m_name(std::move(name)) {
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    }
    ~Writer() override {
        try {
            WriteOut();
        } catch (...) {
            // Whoever wants to know flushes.
        }
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

  protected:
    int_type overflow(int_type c) override {
        WriteOut();
        return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                               : sputc(traits_type::to_char_type(c));
    }
    int sync() override {
        WriteOut();
        return 0;
    }

  private:
    void WriteOut() {
        const char* from = pbase();
        while (from != pptr()) {
            const auto left = static_cast<std::size_t>(pptr() - from);
            const ssize_t length = Uninterrupted([&] { return ::write(m_file.Number(), from, left); });
            if (length < 0) {
                const int error = errno;
                Keep(from, left);
                throw foundation::storage::vfs::Exception(m_name + ": " + std::strerror(error));
            }
            from += length;
        }
        Keep(from, 0);
    }

    /// The bytes that are still to be written, moved to the front.
    void Keep(const char* from, std::size_t length) {
        std::copy_n(from, length, m_bytes.data());
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
        pbump(static_cast<int>(length));
    }

    Descriptor m_file;
    std::string m_name;
    Bytes m_bytes;
};

} // namespace

// A close that fails has closed nevertheless, and nobody could do anything about what it says.
Descriptor::~Descriptor() {
    if (m_number >= 0) {
        ::close(m_number);
    }
}

int OpenRegularFile(const std::string& path, int flags) {
    constexpr mode_t NewFile = 0666;
    // Without O_NONBLOCK the opening of a pipe waits; to a regular file it means nothing.
    const int descriptor = Uninterrupted(
        [&] { return ::open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, NewFile); });
    if (descriptor < 0) {
        return -1;
    }
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        return descriptor;
    }
    ::close(descriptor);
    errno = S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
    return -1;
}

std::unique_ptr<std::streambuf> ReadingBuffer(Descriptor file, std::string name) {
    return std::make_unique<Reader>(std::move(file), std::move(name));
}

std::unique_ptr<std::streambuf> WritingBuffer(Descriptor file, std::string name) {
    return std::make_unique<Writer>(std::move(file), std::move(name));
}

} // namespace linux_host
