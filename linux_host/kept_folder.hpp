#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

/// @file
/// Questions about neighbours. A refresh by time stamps asks for thousands of folders one after the other,
/// and most of what each question costs is the way to the folder that they lie in, which on a network drive
/// may even be asked of the server element by element.

namespace linux_host {

/// The folder that the last entry lay in. It is held open from its second entry on, as long as the library
/// says that it asks for neighbours and that nobody is called in between who might move the folder.
class KeptFolder {
  public:
    static KeptFolder& Get();

    void BeginChecks() { m_checking = true; }
    void BeginNeighbours() { m_amongNeighbours = m_checking; }
    void EndNeighbours();
    void EndChecks() {
        m_checking = false;
        EndNeighbours();
    }

    /// As stat(2) does, by an absolute @p path.
    bool Status(const char* path, struct stat& status);

  private:
    KeptFolder() = default;
    bool Leads(std::string_view folder);
    void Drop();

    std::string m_folder;  ///< of the last entry, with the slash at its end
    int m_descriptor = -1; ///< of it, from the second entry on
    bool m_checking = false;
    bool m_amongNeighbours = false;
};

} // namespace linux_host
