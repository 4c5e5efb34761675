#include "host_interfaces/platform.hpp"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <unistd.h>
#include <utility>

#include "host_interfaces/filesystem.hpp"
#include "linux_host/change_notification.hpp"
#include "linux_host/drive_map.hpp"
#include "linux_host/encoding.hpp"
#include "linux_host/kept_folder.hpp"

namespace host {

IPlatform::~IPlatform() = default;

namespace {

class LinuxPlatform final : public IPlatform {
  public:
    std::uint32_t GetDriveType(const ustring& root) override { return linux_host::RootType(root); }

    ustring FullPath(const ustring& name) override {
        try {
            return fl::filesystem::canonical(name.empty() ? fl::filesystem::CURRENT_DIRECTORY : name, {});
        } catch (const fl::filesystem::Failure&) {
            return {};
        }
    }

    /// time() reads a clock that ticks with the scheduler and may lie behind the times that files get; a
    /// folder from the next second would then look as if it came from the future, and what follows within it
    /// be missed.
    std::int64_t CurrentTime() override {
        std::timespec now{};
        ::clock_gettime(CLOCK_REALTIME, &now);
        return now.tv_sec;
    }

    bool LocalTime(std::int64_t seconds, std::tm& result) override {
        const std::time_t time = seconds;
        return ::localtime_r(&time, &result) != nullptr;
    }

    std::uint32_t CurrentProcessId() override { return static_cast<std::uint32_t>(::getpid()); }

    const char* GetEnvironment(const char* name) override { return std::getenv(name); }

    const char* PreviousCharacter(const char* start, const char* p) override {
        // Forwards from each place where a character of four, three or two bytes may begin: the same reading
        // of broken text as everywhere else, whose bytes stand alone.
        const std::ptrdiff_t before = std::min<std::ptrdiff_t>(p - start, 4);
        for (std::ptrdiff_t length = before; length > 1; --length) {
            const auto size = static_cast<std::size_t>(length);
            if (linux_host::CharacterLength({p - length, size}) == size) {
                return p - length;
            }
        }
        return p > start ? p - 1 : start;
    }

    ChangeHandle FindFirstChangeNotification(const ustring& dirName, bool watchSubtree,
                                             std::uint32_t /* all kinds are reported */) override {
        return watchSubtree ? InvalidChangeHandle : Changes().Open(dirName);
    }
    bool FindNextChangeNotification(ChangeHandle handle) override { return Changes().Rearm(handle); }
    bool FindCloseChangeNotification(ChangeHandle handle) override { return Changes().Close(handle); }
    std::uint32_t WaitForSingleObject(ChangeHandle handle, std::uint32_t milliseconds) override {
        return Changes().Wait(handle, milliseconds);
    }
    void BeginChangeChecks() override {
        Changes().BeginChecks();
        linux_host::KeptFolder::Get().BeginChecks();
    }
    bool HasNews() override { return Changes().HasNews(); }
    void BeginNeighbours() override { linux_host::KeptFolder::Get().BeginNeighbours(); }
    void EndNeighbours() override { linux_host::KeptFolder::Get().EndNeighbours(); }
    void EndChangeChecks() override {
        linux_host::KeptFolder::Get().EndChecks();
        Changes().EndChecks();
    }

    bool WriteProbeFile(const ustring& name, std::string_view text) override {
        return linux_host::WriteProbeFile(name, text);
    }

  private:
    static linux_host::ChangeNotification& Changes() { return linux_host::ChangeNotification::Get(); }
};

LinuxPlatform& OwnPlatform() {
    static LinuxPlatform platform;
    return platform;
}

IPlatform*& Current() {
    static IPlatform* platform = &OwnPlatform();
    return platform;
}

} // namespace

IPlatform& Platform() { return *Current(); }

IPlatform* SetPlatform(IPlatform* platform) {
    return std::exchange(Current(), platform != nullptr ? platform : &OwnPlatform());
}

} // namespace host
