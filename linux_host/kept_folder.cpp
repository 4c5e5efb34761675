#include "linux_host/kept_folder.hpp"

#include <cstring>
#include <fcntl.h>
#include <limits.h>
#include <string_view>
#include <unistd.h>

namespace linux_host {

KeptFolder& KeptFolder::Get() {
    static auto& folder = *new KeptFolder; // for whoever still refreshes while the process ends
    return folder;
}

void KeptFolder::EndNeighbours() {
    m_amongNeighbours = false;
    Drop();
}

void KeptFolder::Drop() {
    m_folder.clear();
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

bool KeptFolder::Status(const char* path, struct stat& status) {
    if (m_amongNeighbours) {
        const char* const entry = std::strrchr(path, '/') + 1;
        // What cannot be answered this way is asked by its name, which tells why; and so is one that the
        // system would find too long.
        if (Leads({path, entry}) && std::strlen(path) < PATH_MAX &&
            ::fstatat(m_descriptor, entry, &status, 0) == 0) {
            return true;
        }
    }
    return ::stat(path, &status) == 0;
}

/// Is the folder open? A lone entry is not worth that.
bool KeptFolder::Leads(std::string_view folder) {
    if (folder != m_folder) {
        Drop();
        m_folder = folder;
    } else if (m_descriptor < 0) {
        m_descriptor = ::open(m_folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    }
    return m_descriptor >= 0;
}

} // namespace linux_host
