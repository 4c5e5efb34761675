#pragma once

#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "host_interfaces/export.hpp"

/// @file
/// The event layer: the bases of the events that a host publishes.

/// Events that one part of a host tells to others.
namespace foundation::msg_svc::eventmgr {

class BaseEvent;
class EventStream;

/// What subscribers may ask of an event's type without knowing the class.
class OVSEL_HOST_API TypeInformation {
  public:
    /// Free words that the maker of an event puts on its type.
    using UserTags = std::vector<std::string>;

    TypeInformation() = default;
    /// With tags; those of the other constructor are empty.
    explicit TypeInformation(UserTags tags) : m_userTags(std::move(tags)) {}
    virtual ~TypeInformation();

    /// Is this the type of the event class that this object describes?
    virtual bool isType(const std::type_info& type) const = 0;
    /// The user tags followed by the names of the class and its bases.
    virtual std::vector<std::string> allNames() const = 0;
    /// Name @p index of the class and its bases, most derived first. @throws std::out_of_range behind them.
    virtual std::string typeName(std::size_t index) const = 0;
    /// The same dynamic type and equal by `equals`.
    virtual bool isEqual(const TypeInformation& other) const = 0;
    /// Are two events of this type equal?
    virtual bool areEventsEqual(const BaseEvent& a, const BaseEvent& b) const = 0;
    /// May the event be told to subscribers of a base type?
    virtual bool isPolymorphic() const = 0;

    /// Equal user tags.
    bool equals(const TypeInformation& other) const { return m_userTags == other.m_userTags; }
    /// The tags that it was made with.
    const UserTags& userTags() const { return m_userTags; }

  private:
    UserTags m_userTags;
};

/// The base of all events. Copies share the type information, which never changes.
class OVSEL_HOST_API BaseEvent {
  public:
    virtual ~BaseEvent();

    /// A new copy that the caller owns, or null when there is no memory for it.
    virtual BaseEvent* clone() const = 0;
    /// May the event leave the process? False here.
    virtual bool canBeSerialized() const;
    /// Writes the event to a stream, if it may leave the process; false here.
    virtual bool fillStream(EventStream& stream) const;
    /// May clients outside the host's own code receive it? True here.
    virtual bool isSORVENClientsAllowed() const;

    /// Valid as long as the event or a copy of it lives.
    const TypeInformation& typeInformation() const { return *m_typeInformation; }
    /// Equal by type; what an event carries beyond that is its own class's business.
    friend bool operator==(const BaseEvent& a, const BaseEvent& b) {
        return a.m_typeInformation->isEqual(*b.m_typeInformation);
    }

  protected:
    /// Takes ownership of @p typeInformation, which must not be null.
    explicit BaseEvent(TypeInformation* typeInformation) : m_typeInformation(typeInformation) {}
    /// Shares the type information.
    BaseEvent(const BaseEvent&) = default;
    /// Shares it too.
    BaseEvent& operator=(const BaseEvent&) = default;

  private:
    std::shared_ptr<const TypeInformation> m_typeInformation;
};

} // namespace foundation::msg_svc::eventmgr
