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

void Throw(const char* text, const char* source, int line, const char* function) {
    const bool here = std::string_view(source).ends_with("services_test.cpp");
    throw std::string(text) + "|" + (here ? "here" : source) + "|" + std::to_string(line) + "|" + function;
}

TEST(DiagnosticsDeathTest, TellAHandlerThePlaceAndEndTheProcessIfItReturns) {
    host::SetFatalHandler(&Throw);
    const std::string line = std::to_string(__LINE__ + 2);
    try {
        HOST_FATAL("broken");
    } catch (const std::string& report) {
        EXPECT_EQ(report, "broken|here|" + line + "|TestBody");
    }
    EXPECT_EXIT(
        {
            host::SetFatalHandler([](const char*, const char*, int, const char*) {});
            HOST_FATAL("broken");
        },
        testing::KilledBySignal(SIGABRT), "");
    EXPECT_EQ(host::SetFatalHandler(nullptr), &Throw);
    EXPECT_DEATH(HOST_FATAL("broken"), "services_test.*TestBody.*: broken");
}

TEST(Scopes, KeepTheirOwnValuesUntilTheyEnd) {
    static const host::ScopeSlotId slot = host::AllocateScopeSlot();
    static int destroyed = 0;
    struct Looker { // destroyed outside of any lock, and when the scope no longer holds it
        ~Looker() { destroyed += host::FindScopeValue(slot) == nullptr ? 1 : 100; }
    };
    const auto first = std::make_shared<int>(1);
    EXPECT_EQ(host::FindScopeValue(slot), nullptr);
    EXPECT_TRUE(host::InsertScopeValue(slot, first));
    EXPECT_FALSE(host::InsertScopeValue(slot, std::make_shared<int>(2))) << "taken";
    EXPECT_EQ(host::FindScopeValue(host::AllocateScopeSlot()), nullptr);

    const std::size_t before = linux_host::EnterScope(7);
    EXPECT_TRUE(host::InsertScopeValue(slot, std::make_shared<Looker>()));
    EXPECT_NE(host::FindScopeValue(slot), first.get());
    linux_host::DestroyScope(7);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(linux_host::EnterScope(before), 7U);
    EXPECT_EQ(host::FindScopeValue(slot), first.get());
    linux_host::DestroyScope(before);
    EXPECT_EQ(first.use_count(), 1);
}

TEST(Printing, GoesToTheSinkWholeOrToStandardOutput) {
    std::vector<std::string> texts;
    linux_host::SetPrintSink([&](std::string_view text) { texts.emplace_back(text); });
    const std::string length(5000, 'x');
    EXPECT_EQ(HostPrintf("%s of %d\n", "one", 2), 9);
    EXPECT_EQ(HostPrintf("%s", length.c_str()), 5000);
    linux_host::SetPrintSink({});
    EXPECT_EQ(texts, (std::vector<std::string>{"one of 2\n", length}));
    testing::internal::CaptureStdout();
    EXPECT_EQ(HostPrintf("%s", "plain"), 5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "plain");
}

TEST(Platform, IsReplacedAndComesBack) {
    host::IPlatform* own = &host::Platform();
    FakePlatform other;
    other.now = 42;
    EXPECT_EQ(host::Platform().CurrentTime(), 42);
    EXPECT_EQ(host::SetPlatform(nullptr), &other);
    EXPECT_EQ(&host::Platform(), own);
    std::tm calendar{};
    EXPECT_TRUE(own->LocalTime(own->CurrentTime(), calendar));
    EXPECT_FALSE(own->LocalTime(std::numeric_limits<std::int64_t>::max(), calendar)) << "no such year";
}

} // namespace
