#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

/// @file
/// Questions about neighbours. A refresh by time stamps asks for thousands of folders one after the other,
/// and most of what each question costs is the way to the folder that they lie in, which on a network drive
/// may even be asked of the server element by element.

namespace linux_host {

/// The folder that the entries last asked for lie in, held open while changes are checked. Holds nothing
/// outside a check, nor when the host has been asked for anything else in between: whoever is called back
/// meanwhile may move the folder, and its name is to be believed again then.
class KeptFolder {
  public:
    static KeptFolder& Get();

    void BeginChecks() { m_checking = true; }
    void EndChecks() {
        m_checking = false;
        Drop();
    }
    /// To be called before the disk is asked for anything but the status of an entry.
    void Drop();

    /// As stat(2) does, by an absolute @p path.
    bool Status(const char* path, struct stat& status);

  private:
    KeptFolder() = default;
    bool Leads(std::string_view folder);

    std::string m_folder;  ///< of the last entry, with the slash at its end
    int m_descriptor = -1; ///< of it, from the second entry on
    bool m_checking = false;
};

} // namespace linux_host
