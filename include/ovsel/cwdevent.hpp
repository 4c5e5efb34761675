#pragma once

#include <string>

#include <host_interfaces/events.hpp>
#include <ovsel/export.hpp>

namespace pathevents {

/// Tells subscribers of the host's event layer that the current directory has changed. The library only
/// defines the event; the part of a host that changes directories publishes it.
class OVSEL_API CwdEvent : public foundation::msg_svc::eventmgr::BaseEvent {
  public:
    /// @param newLocation the new directory, narrow.
    explicit CwdEvent(const std::string& newLocation);
    ~CwdEvent() override;

    /// A new copy that the caller owns, or null when there is no memory.
    BaseEvent* clone() const override;
    bool canBeSerialized() const override;
    bool fillStream(foundation::msg_svc::eventmgr::EventStream& stream) const override;
    bool isSORVENClientsAllowed() const override;

    std::string getNewLocation() const;

  protected:
    CwdEvent(const CwdEvent& other);

  private:
    std::string m_newLocation;
};

} // namespace pathevents
