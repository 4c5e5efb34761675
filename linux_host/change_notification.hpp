#pragma once

#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/ustring.hpp"
#include "linux_host/linux_host.hpp"
#include "linux_host/watched_names.hpp"

/// @file
/// Change handles: what host::IPlatform promises of them, over watched names.

namespace linux_host {

/// The change handles of the process. Nothing runs in the background: events are read when somebody asks.
///
/// A handle is *quiet* or *signalled*, until it is armed again. It is *dead* while its name leads elsewhere
/// or nowhere; each wait on a dead one tries to take its watches anew, and a success counts as a signal,
/// since anything may have happened in between. A new handle begins signalled unless its folder is surely as
/// it was when it was listed last.
class ChangeNotification final : private NameListener {
  public:
    /// Lives until the process ends, since statics of any library may still close handles by then.
    static ChangeNotification& Get();

    /// The operations of host::IPlatform. Opening and reviving cost a few system calls for each folder of the
    /// name that no other handle shares; closing costs one for each watch that nobody else owns.
    host::ChangeHandle Open(const ustring& name);
    bool Rearm(host::ChangeHandle handle);
    bool Close(host::ChangeHandle handle);
    std::uint32_t Wait(host::ChangeHandle handle, std::uint32_t milliseconds);

    /// Between the two, waits of no time answer from memory: without any system call for a live handle,
    /// unless its name must be asked (WatchedNames::Anchor::IsBlind).
    void BeginChecks();
    void EndChecks() { m_checking = false; }
    /// Walks over the handles once, when something has happened since it last found nothing.
    bool HasNews();

    /// Closes the descriptors until the next handle is opened. @pre no handle is open.
    void Restart() {
        m_names.Close();
        ForgetFileSystems();
    }

  private:
    /// What a quiet poll looks at, apart from the rest, so that a walk over all handles touches little
    /// memory.
    struct State {
        std::uint32_t generation = 0; ///< tells a handle from earlier ones at its place
        bool open = false;
        bool signalled = false;
        bool dead = false;
        bool blind = false;
    };
    struct Folder {
        std::string path;
        WatchedNames::Anchor anchor;
    };
    class EmptyUnlessOpen;

    void Changed(std::uint32_t number) override {
        m_states[number].signalled = true;
        m_mayHaveNews = true;
    }
    void Lost(std::uint32_t number) override {
        m_states[number].dead = true;
        m_mayHaveNews = true;
    }

    State* Find(host::ChangeHandle handle);
    std::uint32_t NumberOf(const State& state) const;
    /// The number that stands last in m_free.
    std::uint32_t FreePlace();
    bool Attach(std::uint32_t number);
    bool MayTell(const std::string& folder);
    bool TellsItsChanges(::dev_t device, const std::string& folder);
    bool LeadsToItsFolder(std::uint32_t number) const;
    std::uint32_t Answer(std::uint32_t number);
    std::uint32_t AnswerWithin(std::uint32_t number, std::uint32_t milliseconds);
    void Take(int milliseconds);
    /// Where something was mounted, a device's number may have become another's.
    void ForgetFileSystems() {
        m_telling.clear();
        m_metSilent = false;
    }
    void TakeEchoes();

    WatchedNames m_names{*this};
    std::vector<State> m_states;
    std::vector<Folder> m_folders;     ///< by the same number
    std::vector<std::uint32_t> m_free; ///< numbers of closed handles, with room for all
    /// File systems that were seen to tell their changes; nothing is known of others.
    boost::unordered_flat_set<::dev_t> m_telling;
    bool m_metSilent = false; ///< one that does not was seen too
    bool m_checking = false;
    bool m_mayHaveNews = false; ///< false: no open handle is signalled, dead or blind
};

/// The faults that tests have ordered.
const testing::NotificationFaults& FaultsInForce();

/// Makes, fills and removes a file that did not exist; see host::IPlatform::WriteProbeFile.
bool WriteProbeFile(const ustring& name, std::string_view text);

} // namespace linux_host
