#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <typeinfo>

#include <ovsel/cwdevent.hpp>

namespace {

using pathevents::CwdEvent;

TEST(CwdEvent, CopiesAndDescribesItself) {
    const CwdEvent event("/new");
    const std::unique_ptr<foundation::msg_svc::eventmgr::BaseEvent> copy(event.clone());
    EXPECT_EQ("/new", dynamic_cast<const CwdEvent&>(*copy).getNewLocation());

    const auto& type = event.typeInformation();
    EXPECT_TRUE(type.isType(typeid(CwdEvent)));
    EXPECT_FALSE(type.isType(typeid(int)));
    EXPECT_EQ((std::vector<std::string>{"pathevents::CwdEvent", "foundation::msg_svc::eventmgr::BaseEvent"}),
              type.allNames());
    try {
        type.typeName(2);
        ADD_FAILURE() << "came back";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ("eventmgr::BaseEvent has no base types.", e.what());
    }
    EXPECT_TRUE(type.areEventsEqual(event, *copy));
}

} // namespace
