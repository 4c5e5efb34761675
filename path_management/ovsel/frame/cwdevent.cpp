#include <ovsel/cwdevent.hpp>

#include <new>
#include <stdexcept>
#include <typeinfo>

namespace pathevents {

namespace eventmgr = foundation::msg_svc::eventmgr;

namespace {

template <typename Event>
class DerivedTypeInformation;

/// What the event layer may ask about CwdEvent.
template <>
class DerivedTypeInformation<CwdEvent> final : public eventmgr::TypeInformation {
  public:
    bool isType(const std::type_info& type) const override { return type == typeid(CwdEvent); }

    std::vector<std::string> allNames() const override {
        std::vector<std::string> names = userTags();
        for (std::size_t i = 0; i < nameCount; ++i)
            names.push_back(typeName(i));
        return names;
    }

    std::string typeName(std::size_t index) const override {
        if (index >= nameCount)
            throw std::out_of_range("eventmgr::BaseEvent has no base types.");
        return index == 0 ? "pathevents::CwdEvent" : "foundation::msg_svc::eventmgr::BaseEvent";
    }

    bool isEqual(const TypeInformation& other) const override {
        return typeid(*this) == typeid(other) && equals(other);
    }

    bool areEventsEqual(const eventmgr::BaseEvent& a, const eventmgr::BaseEvent& b) const override {
        return a == b;
    }

    bool isPolymorphic() const override { return true; }

  private:
    static constexpr std::size_t nameCount = 2;
};

} // namespace

CwdEvent::CwdEvent(const std::string& newLocation)
    : BaseEvent(new DerivedTypeInformation<CwdEvent>), m_newLocation(newLocation) {}

CwdEvent::CwdEvent(const CwdEvent& other) = default;

CwdEvent::~CwdEvent() = default;

eventmgr::BaseEvent* CwdEvent::clone() const {
    try {
        return new CwdEvent(*this);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool CwdEvent::canBeSerialized() const { return BaseEvent::canBeSerialized(); }

bool CwdEvent::fillStream(eventmgr::EventStream& stream) const { return BaseEvent::fillStream(stream); }

bool CwdEvent::isSORVENClientsAllowed() const { return BaseEvent::isSORVENClientsAllowed(); }

std::string CwdEvent::getNewLocation() const { return m_newLocation; }

} // namespace pathevents
