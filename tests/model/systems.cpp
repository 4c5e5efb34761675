#include "model/systems.hpp"

#include <gtest/gtest.h>

#include <linux/magic.h>
#include <utility>

#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/reading/vfsmode.hpp"
#include "support/fake_disk.hpp"
#include "support/fake_platform.hpp"
#include "support/fake_storage.hpp"
#include "support/invariants.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace model {

namespace {

/// A disk in memory, a clock and change handles of our own.
class FakeSystem final : public System {
  public:
    FakeSystem(Detection detection, const World& world) {
        m_platform.driveTypes[u"R:\\"] = 4;
        m_platform.handlesRefused = detection == Detection::Times;
        if (detection == Detection::Mixed)
            m_platform.refusesAt = [](const ustring& name) { return name.size() % 2 == 0; };
        FakeDisk::Get() = FakeDisk();
        FakeDisk::Get().Install();
        Show(world.disk);
        Open(world);
    }
    ~FakeSystem() override {
        Close();
        EXPECT_EQ(0u, m_platform.handles.size());
    }

  protected:
    void ChangeDisk(const Disk& before, const Disk& after) override {
        Show(after);
        for (const auto& [name, entries] : before)
            if (!after.contains(name))
                m_platform.Break(U(name));
        for (const auto& [name, entries] : after)
            if (!before.contains(name) || before.at(name) != entries)
                Touch(name);
    }
    /// Times that no clock here will ever show; the last need more than 32 bits.
    void SetTime(const std::string& folder, unsigned number) override {
        const long n = number;
        FakeDisk::Get().times[folder] =
            std::vector{2000 + n, 2'000'000'000 + n, -5000 - n, 5'000'000'000 + n}[number % 4];
    }
    /// A jump leads to seconds that have not been yet, so that two changes never bear one time.
    void Tick(unsigned seconds, bool jump) override {
        const long n = m_jumps * 100'000;
        m_platform.now += seconds;
        if (jump)
            m_platform.now = std::vector{900'000'000 - n, 1'000'000'000 + n, -1'000'000'000 - n,
                                         6'000'000'000 + n}[static_cast<std::size_t>(m_jumps++ % 4)];
    }

  private:
    void Touch(const std::string& name) {
        FakeDisk::Get().times[name] = static_cast<long>(m_platform.now);
        m_platform.Signal(U(name));
    }
    void Show(const Disk& disk) {
        auto& dirs = FakeDisk::Get().dirs;
        dirs.clear();
        dirs[N(fl::filesystem::current_path())];
        for (const auto& [name, entries] : disk) {
            dirs[name];
            m_platform.fullPaths[U(name)] = U(name); // without which it is on no drive, and so not remote
            FakeDisk::Get().times.try_emplace(name, 1000);
            for (const auto& [entry, what] : entries) {
                const int word = IsAmongUntold(entry) ? 0 : IsFolder(what) ? 0x4000 : 0x8000;
                dirs[name].push_back({entry, static_cast<unsigned short>(word)});
            }
        }
        std::erase_if(FakeDisk::Get().times, [&](const auto& time) { return !disk.contains(time.first); });
    }

    FakePlatform m_platform;
    FakeStorageInForce m_storage;
    long m_jumps = 0;
};

/// Folders of a real tree, through the hooks of Linux.
class RealSystem final : public System {
  public:
    RealSystem(Detection detection, const World& world)
        : m_start(fl::filesystem::current_path()), m_rewritesInPlace(detection == Detection::Handles) {
        linux_hooks::InstallDefaultHooks();
        linux_host::DriveMap::Add(u"R:", m_tree.Root(), linux_host::DriveMap::Kind::Remote);
        linux_host::testing::NotificationFaults faults;
        if (detection == Detection::Times)
            faults.fileSystem = NFS_SUPER_MAGIC;
        if (detection == Detection::Mixed)
            faults.mostWatches = 6;
        linux_host::testing::SetNotificationFaults(faults);
        m_tree.Add({"file"});
        for (const auto& [name, entries] : world.disk)
            m_tree.Add({Local(name) + "/"});
        ChangeDisk({}, world.disk);
        unsigned number = 0;
        for (const auto& [name, entries] : world.disk)
            SetTime(name, ++number); // or all would count as just changed
        Open(world);
    }
    ~RealSystem() override {
        Close();
        EXPECT_EQ(0u, linux_host::GetCounters().watches + linux_host::GetCounters().handles);
        fl::filesystem::current_path(m_start);
        linux_host::testing::SetNotificationFaults({});
        linux_host::DriveMap::Reset();
    }

  protected:
    void ChangeDisk(const Disk& before, const Disk& after) override {
        for (const auto& [name, entries] : before)
            for (const auto& [entry, what] : entries) {
                const std::string path = Local(name + "\\" + entry);
                if (What(after, name, entry) == what)
                    continue;
                if (IsRewritten(what, What(after, name, entry)))
                    m_tree.Write(path, "other text");
                else
                    m_tree.Remove(path);
            }
        for (const auto& [name, entries] : after)
            for (const auto& [entry, what] : entries)
                if (const auto old = What(before, name, entry); old != what && !IsRewritten(old, what))
                    Make(Local(name + "\\" + entry), what);
    }
    void SetTime(const std::string& folder, unsigned number) override {
        m_tree.SetTime(Local(folder),
                       (number % 2 == 0 ? 1'000'000 : 2'000'000'000) + static_cast<long>(number));
    }
    void Tick(unsigned, bool) override {}

  private:
    static std::optional<Entry> What(const Disk& disk, const std::string& name, const std::string& entry) {
        const auto folder = disk.find(name);
        if (folder == disk.end() || !folder->second.contains(entry))
            return std::nullopt;
        return folder->second.at(entry);
    }
    /// Only a change handle sees a file that is rewritten where it stands.
    bool IsRewritten(std::optional<Entry> before, std::optional<Entry> after) const {
        return m_rewritesInPlace && before && after && *before <= Entry::ClassFile &&
               *after <= Entry::ClassFile;
    }
    void Make(const std::string& path, Entry what) {
        const char* const target = what == Entry::LinkToFolder ? "far"
                                   : what == Entry::LinkToFile ? "file"
                                                               : "nowhere";
        m_tree.Add({IsLink(what) ? path + " -> " + m_tree.Path(target) : path + (IsFolder(what) ? "/" : "")});
    }
    static std::string Local(std::string name) {
        std::replace(name.begin(), name.end(), '\\', '/');
        return name.substr(3);
    }

    ustring m_start;
    bool m_rewritesInPlace;
    test::TempTree m_tree = test::TempTree::InMemory();
};

} // namespace

System::~System() = default;

void System::Open(const World& world) {
    ovSetMessageFcns(nullptr, nullptr, nullptr);
    m_owner = ovCreatePath(0, "owner of the process's directory");
    CreatePath(world);
}

void System::CreatePath(const World& world) {
    const std::string name = "model " + std::to_string(++m_count);
    m_path = ovCreatePathWithPreFrozen(0, name.c_str(), static_cast<const char16_t*>(nullptr),
                                       world.pathIsExact ? ovCaseSensitive : ovCaseInsensitive, false);
    ovSetNotificationHandleWarnings(m_path, ovWarnCNHNever);
    ovNonNotifiedRemotePathRefreshPolicy(m_path, ovRefreshByTimeStamp);
    ovNonNotifiedRemoteCWDRefreshPolicy(m_path, ovRefreshByTimeStamp);
    Enter(world);
}

/// Brings the path to where the world has it, with everything read for the first time.
void System::Enter(const World& world) {
    ovReplacePath(m_path, u"");
    ovHideCWD(m_path, false);
    Expect(ovSetCWDName(m_path, U(world.cwd.name)) == nullptr, "no current directory");
    for (const Dir& dir : world.path)
        ovAddDir(m_path, U(dir.name), ovDirAddAtEnd);
}

void System::Close() {
    m_interests.clear();
    m_interference = {};
    m_path = m_owner = ovPath();
    ovTerminate();
    for (const ovDir& dir : m_handles)
        EXPECT_FALSE(ovIsDirHandleValid(dir));
    m_handles.clear();
}

void System::Expect(bool holds, const char* fault) {
    if (m_isPredictable && !holds)
        m_faults += std::string(fault) + "\n";
}

/// The directory of the path, also where it is the current one as well.
ovDir System::Find(const std::string& name) const {
    ovDir dir = ovGetNextPathDir(ovGetCWD(m_path));
    while (ovGetDirType(dir) != ovDirTypeNull && N(ovGetDirName(dir)) != name)
        dir = ovGetNextPathDir(dir);
    return dir;
}

Names System::Listed() const {
    Names names;
    for (ovDir dir = ovGetCWD(m_path); ovGetDirType(dir) != ovDirTypeNull; dir = ovGetNextPathDir(dir))
        names.push_back(N(ovGetDirName(dir)));
    return names;
}

std::string System::Faults() {
    return std::exchange(m_faults, {}) + InvariantCheck(m_path, &m_handles).Run();
}

std::vector<SystemKind> SystemKinds() {
    std::vector<SystemKind> kinds;
    for (const bool isReal : {false, true})
        for (const Detection detection : {Detection::Handles, Detection::Times, Detection::Mixed})
            kinds.push_back({isReal, detection});
    return kinds;
}

std::string NameOf(const SystemKind& kind) {
    static const char* const names[] = {"Handles", "Times", "Mixed"};
    return (kind.isReal ? "Real" : "Fake") + std::string(names[static_cast<int>(kind.detection)]);
}

World MakeWorld(const SystemKind& kind) {
    World world;
    world.canHide = !IsVFSMode();
    world.hasLinks = kind.isReal;
    world.untold = IsVFSMode() ? Untold::Nothing : kind.isReal ? Untold::Links : Untold::LinksAndSome;
    return world;
}

std::unique_ptr<System> MakeSystem(const SystemKind& kind, const World& world) {
    if (kind.isReal)
        return std::make_unique<RealSystem>(kind.detection, world);
    return std::make_unique<FakeSystem>(kind.detection, world);
}

} // namespace model
