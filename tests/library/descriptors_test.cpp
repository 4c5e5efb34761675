#include <ctime>
#include <gtest/gtest.h>
#include <typeinfo>

#include <ovsel/cwdevent.hpp>
#include <ovsel/descriptors.hpp>

#include "host_interfaces/array.hpp"
#include "host_interfaces/text.hpp"
#include "linux_host/linux_host.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace {

struct Destroy {
    void operator()(HostArray* value) const { host::DestroyArray(value); }
};
using Value = std::unique_ptr<HostArray, Destroy>;

/// What the builtin makes of a name: the POSIX path of its answer, or what it raised.
std::string Absolutized(const std::string& name) {
    const Value given(host::NewTextArray(U(name)));
    const HostArray* inputs[] = {given.get()};
    HostArray* outputs[] = {nullptr};
    try {
        QuerySVFcnTable_ovsel()->entries[0].function(1, outputs, 1, inputs);
    } catch (const fl::i18n::MessageException& error) {
        EXPECT_EQ(outputs[0], nullptr);
        return error.identifier() + " " + N(error.arguments().at(0));
    }
    const Value answer(outputs[0]);
    return linux_host::DriveMap::ToPath(host::TextOfArray(*answer)).value_or("no path");
}

TEST(Descriptors, TellWhatTheLibraryIsAndOfferItsOneBuiltin) {
    const ovFcnTable& table = *QuerySVFcnTable_ovsel();
    ASSERT_EQ(table.entryCount, 1U);
    EXPECT_EQ(table.entries[0].reserved, nullptr);
    // The host reads the first words without knowing the type.
    EXPECT_EQ(*reinterpret_cast<const ovFcnTableEntry* const*>(&table), table.entries);
    EXPECT_EQ(*reinterpret_cast<const ovBuiltinFcn*>(table.entries), table.entries[0].function);
    EXPECT_STREQ(table.library, "ovsel");
    EXPECT_STREQ(table.version, ovsel_version);
    int number[3] = {};
    int end = 0;
    EXPECT_EQ(3, std::sscanf(ovsel_version, "%d.%d.%d%n", &number[0], &number[1], &number[2], &end));
    EXPECT_EQ('\0', ovsel_version[end]) << ovsel_version;
    std::tm day{};
    EXPECT_STREQ("", ::strptime(ovsel_build_date, "%b %d %Y", &day)) << ovsel_build_date;
    EXPECT_NE('/', ovsel_relative_path[0]);
    EXPECT_NE(nullptr, std::strstr(ovsel_relative_path, "libovsel.so.")) << ovsel_relative_path;
}

TEST(Descriptors, AbsolutizeANameOrRaiseItsMessage) {
    const test::TempTree tree{"a/b/", "a/+pkg/", "link -> a/b", "lost -> nowhere"};
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.Path("a"));
    const std::string lost = "SORVEN:ovsel:cannotAbsolutizePath ";
    const std::pair<std::string, std::string> rows[] = {
        {"b", tree.Path("a/b")},
        {".", tree.Path("a")},
        {"b/../+pkg", tree.Path("a/+pkg")},
        {"b\\..\\..\\link\\", tree.Path("a/b")},
        {"C:" + tree.Path("link"), tree.Path("a/b")},
        {"nothing", lost + "nothing"},
        {"../lost", lost + "../lost"},
        {"Q:\\a", lost + "Q:\\a"},
        {std::string("b\0c", 3), lost + std::string("b\0c", 3)},
    };
    for (const auto& [name, answer] : rows)
        EXPECT_EQ(Absolutized(name), answer) << name;
    std::filesystem::current_path(before);
}

TEST(Descriptors, OfAChangeOfDirectoryAreCopiedAndTellTheirType) {
    using pathevents::CwdEvent;
    const CwdEvent event("/new");
    const std::unique_ptr<foundation::msg_svc::eventmgr::BaseEvent> copy(event.clone());
    EXPECT_EQ("/new", dynamic_cast<const CwdEvent&>(*copy).getNewLocation());
    const auto& type = event.typeInformation();
    EXPECT_TRUE(type.isType(typeid(CwdEvent)) && !type.isType(typeid(int)));
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
