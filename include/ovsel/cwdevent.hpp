#pragma once

#include <string>

#include <host_interfaces/events.hpp>
#include <ovsel/export.hpp>

/// @file
/// The event by which a host tells that the current directory has changed.

/// Events about paths.
namespace pathevents {

/// Tells subscribers of the host's event layer that the current directory has changed. The library only
/// defines the event; the part of a host that changes directories publishes it.
class OVSEL_API CwdEvent : public foundation::msg_svc::eventmgr::BaseEvent {
  public:
    /// @param newLocation the new directory's absolute name, narrow.
    explicit CwdEvent(const std::string& newLocation);
    ~CwdEvent() override;

    /// A new copy that the caller owns, or null when there is no memory.
    BaseEvent* clone() const override;
    /// False: the event does not leave the process.
    bool canBeSerialized() const override;
    /// False; nothing is written to @p stream.
    bool fillStream(foundation::msg_svc::eventmgr::EventStream& stream) const override;
    /// True: clients outside the host's own code may receive it.
    bool isSORVENClientsAllowed() const override;

    /// The name that the event was made with.
    std::string getNewLocation() const;

  protected:
    /// What clone uses; the copy shares the type information.
    CwdEvent(const CwdEvent& other);

  private:
    std::string m_newLocation;
};

} // namespace pathevents
