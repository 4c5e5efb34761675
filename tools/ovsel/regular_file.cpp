#include "tools/ovsel/regular_file.hpp"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

Descriptor::~Descriptor() {
    if (m_value >= 0)
        ::close(m_value);
}

int OpenRegular(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status {};
    if (file < 0 || (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)))
        return file;
    ::close(file);
    errno = S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
    return -1;
}

std::optional<std::string> ReadUpTo(int file, std::size_t most) {
    constexpr std::size_t chunk = 1U << 16;
    std::string text;
    while (text.size() < most) {
        const std::size_t length = text.size();
        text.resize(std::min(most, length + chunk));
        const ::ssize_t count = ::read(file, text.data() + length, text.size() - length);
        text.resize(length + static_cast<std::size_t>(std::max<::ssize_t>(count, 0)));
        if (count == 0)
            break;
        if (count < 0 && errno != EINTR)
            return std::nullopt;
    }
    return text;
}

} // namespace tool
