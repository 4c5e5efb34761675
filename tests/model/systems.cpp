#include "model/systems.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <linux/magic.h>
#include <sys/stat.h>

#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "support/fake_disk.hpp"
#include "support/fake_platform.hpp"
#include "support/fake_storage.hpp"
#include "support/invariants.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace model {

namespace {

using Kind = Operation::Kind;

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
    ~FakeSystem() override { Close(); }

  protected:
    void ChangeDisk(const Disk& before, const Disk& after, const Operation& operation) override {
        Show(after);
        // Also a folder that was made anew with what it held is another one.
        const bool isNew = operation.kind != Kind::Put;
        for (const auto& [name, entries] : before) {
            const auto found = after.find(name);
            if (found == after.end())
                m_platform.Break(U(name));
            else if (found->second != entries || (isNew && before != after))
                Touch(name);
        }
        for (const auto& [name, entries] : after)
            if (!before.contains(name))
                Touch(name);
    }
    void Tick(unsigned seconds) override { m_platform.now += seconds; }

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
            for (const auto& [entry, isFolder] : entries) {
                const bool told = entry != "draw.sv"; // of one file a listing tells nothing
                dirs[name].push_back({entry, static_cast<unsigned short>(isFolder ? 0x4000
                                                                         : told   ? 0x8000
                                                                                  : 0)});
            }
        }
        std::erase_if(FakeDisk::Get().times, [&](const auto& time) { return !disk.contains(time.first); });
    }

    FakePlatform m_platform;
    FakeStorageInForce m_storage;
};

/// Folders of a real tree, through the hooks of Linux.
class RealSystem final : public System {
  public:
    RealSystem(Detection detection, const World& world) : m_start(fl::filesystem::current_path()) {
        linux_hooks::InstallDefaultHooks();
        linux_host::DriveMap::Add(u"R:", m_tree.Root(), linux_host::DriveMap::Kind::Remote);
        linux_host::testing::NotificationFaults faults;
        if (detection == Detection::Times)
            faults.fileSystem = NFS_SUPER_MAGIC;
        if (detection == Detection::Mixed)
            faults.mostWatches = 6;
        linux_host::testing::SetNotificationFaults(faults);
        for (const auto& [name, entries] : world.disk)
            m_tree.Add({Local(name) + "/"});
        ChangeDisk({}, world.disk, {});
        Open(world);
    }
    ~RealSystem() override {
        Close();
        fl::filesystem::current_path(m_start);
        linux_host::testing::SetNotificationFaults({});
        linux_host::DriveMap::Reset();
    }

  protected:
    void ChangeDisk(const Disk& before, const Disk& after, const Operation&) override {
        for (const auto& [name, entries] : before)
            for (const auto& [entry, isFolder] : entries)
                if (!Has(after, name, entry, isFolder))
                    m_tree.Remove(Local(name + "\\" + entry));
        for (const auto& [name, entries] : after)
            for (const auto& [entry, isFolder] : entries)
                if (!Has(before, name, entry, isFolder))
                    m_tree.Add({Local(name + "\\" + entry) + (isFolder ? "/" : "")});
    }
    void Tick(unsigned) override {}

  private:
    static bool Has(const Disk& disk, const std::string& name, const std::string& entry, bool isFolder) {
        const auto folder = disk.find(name);
        if (folder == disk.end())
            return false;
        const auto found = folder->second.find(entry);
        return found != folder->second.end() && found->second == isFolder;
    }
    static std::string Local(std::string name) {
        std::replace(name.begin(), name.end(), '\\', '/');
        return name.substr(3);
    }

    ustring m_start;
    test::TempTree m_tree = test::TempTree::InMemory();
};

ovExtensionList ListOf(const std::vector<std::string>& extensions, std::vector<const char*>& room) {
    if (extensions.empty())
        return nullptr;
    for (const std::string& extension : extensions)
        room.push_back(extension.c_str());
    room.push_back(nullptr);
    return room.data();
}

ovSearch* Create(const ovPath& path, const Question& question, ovExtensionList extensions) {
    const ustring name = U(question.name);
    const ovCaseSensitivity rule = question.exact ? ovCaseSensitive : ovCaseInsensitive;
    const ustring from = U(question.from);
    switch (question.scope) {
    case Scope::All:
        return ovCreateAllSearchIterator(path, name, extensions, rule);
    case Scope::PathOnly:
        return ovCreatePathOnlySearchIterator(path, name, extensions, rule);
    case Scope::Visible:
        return ovCreateDirnameVisibleSearchIterator(path, from, name, extensions, rule);
    case Scope::Method:
        return ovCreateMethodSearchIterator(path, name, extensions, rule);
    case Scope::Private:
        return ovCreatePrivateSearchIterator(ovFindDirFullName(path, from), name, extensions, rule);
    default:
        return ovCreateDirSearchIterator(ovFindDirFullName(path, from), name, extensions, rule);
    }
}

} // namespace

System::~System() = default;

void System::Open(const World& world) {
    ovSetMessageFcns(nullptr, nullptr, nullptr);
    m_owner = ovCreatePath(0, "owner of the process's directory");
    m_path =
        ovCreatePathWithPreFrozen(0, "model", static_cast<const char16_t*>(nullptr), ovCaseSensitive, false);
    ovSetNotificationHandleWarnings(m_path, ovWarnCNHNever);
    ovNonNotifiedRemotePathRefreshPolicy(m_path, ovRefreshByTimeStamp);
    ovNonNotifiedRemoteCWDRefreshPolicy(m_path, ovRefreshByTimeStamp);
    ASSERT_EQ(nullptr, ovSetCWDName(m_path, U(world.cwd.name)));
    for (const Dir& dir : world.path)
        ovAddDir(m_path, U(dir.name), ovDirAddAtEnd);
}

void System::Close() {
    m_interests.clear();
    m_handles.clear();
    m_path = m_owner = ovPath();
    ovTerminate();
}

ovDir System::Find(unsigned number) {
    return ovFindDirFullName(m_path, U(PathPool()[number % PathPool().size()]));
}

void System::Apply(const World& before, const World& after, const Operation& operation) {
    const ustring dir = U(PathPool()[operation.a % PathPool().size()]);
    switch (operation.kind) {
    case Kind::AddAtBegin:
        ovAddDir(m_path, dir, ovDirAddAtBegin);
        break;
    case Kind::AddAtEnd:
        ovAddDir(m_path, dir, ovDirAddAtEnd);
        break;
    case Kind::AddFrozen:
        ovSetFreezeAllAddedDirectories(m_path, true);
        ovAddDir(m_path, dir, ovDirAddAtEnd);
        ovSetFreezeAllAddedDirectories(m_path, false);
        break;
    case Kind::Remove:
        ovRemoveDir(Find(operation.a));
        break;
    case Kind::Replace: {
        std::string list;
        for (const std::string& name : World::Choice(operation))
            list += name + ";";
        ovReplacePath(m_path, U(list));
        break;
    }
    case Kind::ChangeCWD:
        EXPECT_EQ(nullptr, ovSetCWDName(m_path, U(after.cwd.name)));
        break;
    case Kind::Freeze:
        ovRefreshAllDirectories(m_path, ovRefreshCheck);
        ovFreeze(Find(operation.a));
        break;
    case Kind::Thaw:
        ovUnFreeze(Find(operation.a));
        ovRefreshAllDirectories(m_path, ovRefreshReload);
        break;
    case Kind::Hide:
        ovHideCWD(m_path, after.hidden);
        break;
    case Kind::Unhide:
        ovHideCWD(m_path, false);
        ovRefreshAllDirectories(m_path, ovRefreshReload);
        break;
    case Kind::Mark:
        Mark(after, operation);
        break;
    case Kind::Refresh:
        ovRefreshAllDirectories(m_path, static_cast<ovDirRefreshType>(operation.a % 3 + 1));
        // What a forced reload found new below a frozen directory is not frozen by itself.
        if (operation.a % 3 == 2)
            for (const std::string& name : after.frozen)
                ovFreeze(ovFindDirFullName(m_path, U(name)));
        break;
    case Kind::Tick:
        Tick(operation.a % 3);
        break;
    case Kind::KeepHandle:
        m_handles.push_back(Find(operation.a));
        break;
    case Kind::DropHandles:
        m_handles.clear();
        break;
    case Kind::Listen:
        m_interests.push_back(ovRegisterPathInterest(
            m_path, [this](ovEventType, ovDir about) { m_eventCount += ovGetDirName(about).size(); }));
        break;
    case Kind::StopListening:
        if (!m_interests.empty()) {
            ovCancelPathInterest(m_interests.back());
            m_interests.pop_back();
        }
        break;
    case Kind::Search:
        Search(operation);
        break;
    default:
        ChangeDisk(before.disk, after.disk, operation);
        break;
    }
}

void System::Mark(const World& world, const Operation& operation) {
    auto folder = world.disk.begin();
    std::advance(folder, static_cast<std::ptrdiff_t>(operation.a % world.disk.size()));
    const ustring name = U(folder->first);
    switch (operation.b % 6) {
    case 0:
        return ovSetAllChanged(m_path);
    case 1:
        return ovChangedUnknownDir(m_path);
    case 2:
        return ovSetDirChanged(Find(operation.a));
    case 3:
        ovSetDirChanged(m_path, name);
        return;
    case 4:
        ovSetDirRemoved(m_path, name);
        return;
    default:
        ovSetFullnameChanged(m_path, name + u"\\plot.sv");
        return;
    }
}

void System::Search(const Operation& operation) {
    ::Search search(
        ovCreateAllSearchIterator(m_path, operation.b % 2 == 0 ? u"plot" : u"", nullptr, ovCaseOfPath));
    for (unsigned i = operation.a % 4; i > 0; --i)
        i % 2 == 0 ? search.Step() : search.Step(&ovFindNextUnspecified);
}

std::vector<Answer> System::Ask(const Question& question) {
    std::vector<const char*> room;
    const ovExtensionList extensions = ListOf(question.extensions, room);
    const ::Search search(Create(m_path, question, extensions));
    std::vector<Answer> answers;
    ustring name;
    for (int match; (match = ovFindNextFile(search.Get(), nullptr, name)) != 0;)
        answers.push_back({{}, match, N(name)});
    EXPECT_EQ(u"", name) << "a miss has no name";
    return answers;
}

std::string System::BrokenInvariants() { return InvariantCheck(m_path).Run(); }

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

std::unique_ptr<System> MakeSystem(const SystemKind& kind, const World& world) {
    if (kind.isReal)
        return std::make_unique<RealSystem>(kind.detection, world);
    return std::make_unique<FakeSystem>(kind.detection, world);
}

} // namespace model
