// The small services of a host: diagnostics, scopes, printing, the platform in force.

#include <gtest/gtest.h>
#include <limits>

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/scope_storage.hpp"
#include "host_interfaces/utility.hpp"
#include "linux_host/linux_host.hpp"
#include "tests/support/fake_platform.hpp"

namespace {

TEST(DiagnosticsDeathTest, TellThePlaceAndEndTheProcessAlsoIfAHandlerReturns) {
    const std::string line = std::to_string(__LINE__ + 2);
    host::SetFatalHandler(nullptr); // back to the host's own
    EXPECT_DEATH(HOST_FATAL("broken"), "services_test.cpp:" + line + ": TestBody.*: broken");
    const auto fail = [] {
        host::SetFatalHandler([](const char*, const char*, int, const char*) {});
        HOST_FATAL("broken");
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT), "");
}

TEST(Scopes, HoldOneValueOfEachKindAndLetGoOfItBeforeItEnds) {
    static const host::ScopeSlotId slot = host::AllocateScopeSlot();
    static int destroyed = 0;
    struct Looker { // destroyed outside of any lock, and when the scope no longer holds it
        ~Looker() { destroyed += host::FindScopeValue(slot) == nullptr ? 1 : 100; }
    };
    const std::size_t before = linux_host::EnterScope(7);
    EXPECT_TRUE(host::InsertScopeValue(slot, std::make_shared<Looker>()));
    EXPECT_FALSE(host::InsertScopeValue(slot, std::make_shared<int>(2))) << "taken";
    EXPECT_EQ(host::FindScopeValue(host::AllocateScopeSlot()), nullptr);
    linux_host::DestroyScope(7);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(linux_host::EnterScope(before), 7U);
}

TEST(Printing, GoesToTheSinkWholeOrToStandardOutput) {
    std::vector<std::string> texts;
    linux_host::SetPrintSink([&](std::string_view text) { texts.emplace_back(text); });
    const std::string length(5000, 'x');
    EXPECT_EQ(HostPrintf("%s of %d%s\n", "one", 2, length.c_str()), 5009);
    linux_host::SetPrintSink({});
    testing::internal::CaptureStdout();
    EXPECT_EQ(HostPrintf("%s", "plain"), 5);
    texts.push_back(testing::internal::GetCapturedStdout());
    EXPECT_EQ(texts, (std::vector<std::string>{"one of 2" + length + "\n", "plain"}));
}

TEST(Platform, IsReplacedAndComesBack) {
    host::IPlatform* own = &host::Platform();
    FakePlatform other;
    EXPECT_EQ(host::SetPlatform(nullptr), &other);
    EXPECT_EQ(&host::Platform(), own);
    std::tm calendar{};
    EXPECT_TRUE(own->LocalTime(own->CurrentTime(), calendar));
    EXPECT_FALSE(own->LocalTime(std::numeric_limits<std::int64_t>::max(), calendar)) << "no such year";
}

} // namespace
