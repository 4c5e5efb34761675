#include "host_interfaces/events.hpp"

namespace foundation::msg_svc::eventmgr {

TypeInformation::~TypeInformation() = default;

BaseEvent::~BaseEvent() = default;

bool BaseEvent::canBeSerialized() const { return false; }

bool BaseEvent::fillStream(EventStream& /*stream*/) const { return false; }

bool BaseEvent::isSORVENClientsAllowed() const { return true; }

} // namespace foundation::msg_svc::eventmgr
