// The small services of a host: diagnostics, scopes, printing, the stop watch, memory, the platform in force.

#include <gtest/gtest.h>
#include <limits>

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/events.hpp"
#include "host_interfaces/platform.hpp"
#include "host_interfaces/scope_storage.hpp"
#include "host_interfaces/storage.hpp"
#include "host_interfaces/utility.hpp"
#include "linux_host/linux_host.hpp"

namespace {

void Throw(const char* text, const char* source, int line, const char* function) {
    throw std::string(text) + "|" + (std::string(source).ends_with("services_test.cpp") ? "here" : source) +
        "|" + std::to_string(line) + "|" + function;
}

TEST(Diagnostics, TellAHandlerTextAndPlace) {
    const host::FatalHandler before = host::SetFatalHandler(&Throw);
    std::string report;
    const int line = __LINE__ + 2;
    try {
        HOST_FATAL("broken");
    } catch (const std::string& text) {
        report = text;
    }
    EXPECT_EQ(report, "broken|here|" + std::to_string(line) + "|TestBody");
    EXPECT_EQ(host::SetFatalHandler(nullptr), &Throw);
    EXPECT_EQ(host::SetFatalHandler(before), before) << "null had restored the default";
}

TEST(DiagnosticsDeathTest, EndTheProcessByDefaultAndWhenAHandlerReturns) {
    EXPECT_DEATH(HOST_FATAL("broken"), "services_test.*TestBody.*: broken");
    EXPECT_EXIT(
        {
            host::SetFatalHandler([](const char*, const char*, int, const char*) {});
            HOST_FATAL("broken");
        },
        testing::KilledBySignal(SIGABRT), "");
}

TEST(Scopes, KeepTheirOwnValuesUntilTheyEnd) {
    const host::ScopeSlotId slot = host::AllocateScopeSlot();
    const host::ScopeSlotId other = host::AllocateScopeSlot();
    const auto first = std::make_shared<int>(1);
    const auto second = std::make_shared<int>(2);
    EXPECT_EQ(host::FindScopeValue(slot), nullptr);
    EXPECT_TRUE(host::InsertScopeValue(slot, first));
    EXPECT_FALSE(host::InsertScopeValue(slot, second)) << "taken";
    EXPECT_EQ(host::FindScopeValue(slot), first.get());
    EXPECT_EQ(host::FindScopeValue(other), nullptr);

    const std::size_t before = linux_host::EnterScope(7);
    EXPECT_EQ(host::FindScopeValue(slot), nullptr);
    EXPECT_TRUE(host::InsertScopeValue(slot, second));
    EXPECT_EQ(linux_host::EnterScope(before), 7U);
    EXPECT_EQ(host::FindScopeValue(slot), first.get());
    EXPECT_EQ(second.use_count(), 2);
    linux_host::DestroyScope(7);
    EXPECT_EQ(second.use_count(), 1) << "the scope's end destroys what it held";
    linux_host::DestroyScope(before);
}

TEST(Scopes, MayBeLookedAtWhileOneIsDestroyed) {
    static host::ScopeSlotId slot = host::AllocateScopeSlot();
    struct Looker {
        ~Looker() { EXPECT_EQ(host::FindScopeValue(slot), nullptr); }
    };
    EXPECT_TRUE(host::InsertScopeValue(slot, std::make_shared<Looker>()));
    linux_host::DestroyScope(0);
}

TEST(Printing, GoesToStandardOutputOrToTheSink) {
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
    EXPECT_EQ(texts.size(), 2U);
}

TEST(Utility, MeasuresFromTheLastStart) {
    HostTic();
    const double first = HostToc("a");
    EXPECT_GE(first, 0.0);
    EXPECT_GE(HostToc(nullptr), first);
}

TEST(Utility, RefusesBlocksThatCannotBe) {
    // Beyond what the compiler may know to be impossible.
    volatile std::size_t huge = std::numeric_limits<std::size_t>::max() / 2;
    EXPECT_EQ(HostCalloc(huge, 4), nullptr) << "the product overflows";
    void* block = HostCalloc(4, 2);
    EXPECT_EQ(std::string(static_cast<char*>(block), 8), std::string(8, '\0'));
    block = HostRealloc(block, 0);
    ASSERT_NE(block, nullptr) << "shrunk, not freed";
    HostFree(block);
    HostFree(HostMallocWithCheck(0));
    HostFree(nullptr);
}

class OtherPlatform : public host::IPlatform {
  public:
    std::uint32_t GetDriveType(const ustring&) override { return 0; }
    ustring FullPath(const ustring&) override { return {}; }
    std::int64_t CurrentTime() override { return 42; }
    bool LocalTime(std::int64_t, std::tm&) override { return false; }
    std::uint32_t CurrentProcessId() override { return 0; }
    const char* GetEnvironment(const char*) override { return nullptr; }
    const char* PreviousCharacter(const char* start, const char*) override { return start; }
};

TEST(Platform, IsReplacedAndComesBack) {
    OtherPlatform other;
    host::IPlatform* own = host::SetPlatform(&other);
    EXPECT_EQ(host::Platform().CurrentTime(), 42);
    EXPECT_EQ(host::SetPlatform(nullptr), &other);
    EXPECT_EQ(&host::Platform(), own);
    EXPECT_EQ(own->CurrentProcessId(), static_cast<std::uint32_t>(::getpid()));
    EXPECT_GT(own->CurrentTime(), 1700000000);
    std::tm calendar{};
    EXPECT_TRUE(own->LocalTime(86400 * 365, calendar));
    EXPECT_FALSE(own->LocalTime(std::numeric_limits<std::int64_t>::max(), calendar)) << "no such year";
    EXPECT_EQ(own->GetEnvironment("OVSEL_NO_SUCH_VARIABLE"), nullptr);
}

TEST(StorageSystems, AreEachTheirOwn) {
    const auto one = foundation::storage::vfs::createStorageSystem({}, nullptr);
    EXPECT_NE(one, nullptr);
    EXPECT_NE(one, foundation::storage::vfs::createStorageSystem({}, nullptr));
}

} // namespace
