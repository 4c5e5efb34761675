#include "model/systems.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <linux/magic.h>
#include <random>
#include <stdexcept>
#include <utility>

#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "model/difference.hpp"
#include "ovsel/reading/vfsmode.hpp"
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
    ~FakeSystem() override {
        Close();
        EXPECT_EQ(0u, m_platform.handles.size());
    }

  protected:
    void ChangeDisk(const Disk& before, const Disk& after) override {
        Show(after);
        for (const auto& [name, entries] : before) {
            const auto found = after.find(name);
            if (found == after.end())
                m_platform.Break(U(name));
            else if (found->second != entries)
                Touch(name);
        }
        for (const auto& [name, entries] : after)
            if (!before.contains(name))
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

ovExtensionList ListOf(const std::vector<std::string>& extensions, std::vector<const char*>& room) {
    if (extensions.empty())
        return nullptr;
    for (const std::string& extension : extensions)
        room.push_back(extension.c_str());
    room.push_back(nullptr);
    return room.data();
}

ovSearch* Create(const ovPath& path, const Question& question, ovExtensionList extensions) {
    static constexpr ovCaseSensitivity rules[] = {ovCaseSensitive, ovCaseInsensitive, ovCaseOfPath};
    const ovCaseSensitivity rule = rules[static_cast<int>(question.rule)];
    const ustring name = U(question.name);
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

/// Any of the functions that answer a file, in either form.
using Find = std::function<int(ovDir*, std::string&)>;

Find Wide(std::function<int(ovDir*, ustring&)> find) {
    return [=](ovDir* dir, std::string& name) {
        ustring text = u"left over";
        const int match = find(dir, text);
        name = N(text);
        return match;
    };
}
Find Narrow(std::function<int(ovDir*, char*)> find) {
    return [=](ovDir* dir, std::string& name) {
        char text[1024] = "left over";
        const int match = find(dir, text);
        name = text;
        return match;
    };
}

/// What is answered is the whole name of an item of the directory, or nothing at all.
Answer StepOf(const Find& find) {
    ovDir dir;
    std::string name;
    const int match = find(&dir, name);
    const bool isNone = ovGetDirType(dir) == ovDirTypeNull;
    const bool isWhole = match != 0 && !LeafOf(name).empty() && ParentOf(name) == N(ovGetDirName(dir));
    if (isNone ? name.empty() : isWhole)
        return {{}, isNone ? 0 : match, name};
    return {{}, match, "no whole name: " + name};
}

std::vector<Answer> Walk(const Find& next, const Find& nextInDir) {
    std::vector<Answer> answers;
    for (Answer answer = StepOf(next); !answer.name.empty(); answer = StepOf(next)) {
        for (; !answer.name.empty() && answers.size() < 1000;
             answer = nextInDir ? StepOf(nextInDir) : Answer())
            answers.push_back(answer);
    }
    answers.push_back(StepOf(next)); // nothing behind the end
    if (answers.back().name.empty())
        answers.pop_back();
    return answers;
}

std::vector<Answer> Dirs(::ovSearch* search) {
    std::vector<Answer> answers;
    ovDir dir;
    while (ovFindNextDir(search, &dir))
        answers.push_back({{}, 1, N(ovGetDirName(dir))});
    return answers;
}

/// Files in all ways to walk, by turns.
std::vector<Answer> Files(::ovSearch* search, unsigned way) {
    const Find wide = Wide([=](ovDir* dir, ustring& name) { return ovFindNextFile(search, dir, name); });
    const Find narrow = Narrow([=](ovDir* dir, char* name) { return ovFindNextFile(search, dir, name); });
    const Find here =
        Wide([=](ovDir* dir, ustring& name) { return ovFindNextFileBounded(search, dir, name); });
    const Find narrowHere =
        Narrow([=](ovDir* dir, char* name) { return ovFindNextFileBounded(search, dir, name); });
    return Walk(way % 2 == 0 ? wide : narrow, way % 4 < 2 ? Find() : way % 8 < 6 ? here : narrowHere);
}

std::vector<Answer> FirstFile(const ovPath& path, const Question& question, ovExtensionList extensions,
                              bool narrow) {
    const ustring asker = U(question.from.empty() ? "" : question.from + "\\asker.sv");
    const ustring name = U(question.name);
    const Find visible = Wide([=](ovDir* dir, ustring& full) {
        return ovFindFirstFileVisibleToFile(path, asker, name, extensions, dir, full);
    });
    const Find wide = Wide(
        [=](ovDir* dir, ustring& full) { return ovFindFirstFileInAll(path, name, extensions, dir, full); });
    const Find inAll = Narrow([&, path](ovDir* dir, char* full) {
        return ovFindFirstFileInAll(path, question.name.c_str(), extensions, dir, full);
    });
    const Answer answer = StepOf(question.scope == Scope::Visible ? visible : narrow ? inAll : wide);
    return answer.name.empty() ? std::vector<Answer>{} : std::vector{answer};
}

std::vector<Answer> ClassFile(const ovPath& path, const Question& question, ovExtensionList extensions) {
    const char* const name = question.name.c_str();
    ustring wide = u"untouched";
    char narrow[1024] = "left over";
    const bool found = ovGetClassFile(path, name, wide, extensions);
    const bool agrees = found == ovDoesClassFileExist(path, name, extensions) &&
                        found == ovGetClassFile(path, name, narrow, sizeof narrow, extensions) &&
                        (found ? N(wide) == narrow : wide == u"untouched" && *narrow == 0);
    if (!agrees)
        return {{{}, 1, "different forms, different answers"}};
    return found ? std::vector<Answer>{{{}, 1, narrow}} : std::vector<Answer>{};
}

void RefreshEach(const ovDir& dir, ovDirRefreshType type) {
    ovRefreshDirectory(dir, type);
    for (const auto next : {&ovGetMethodDirs, &ovGetPackageDirs})
        for (ovDir below = next(dir, dir); ovGetDirType(below) != ovDirTypeNull; below = next(dir, below))
            RefreshEach(below, type);
    if (const ovDir below = ovGetPrivateDir(dir); ovGetDirType(below) != ovDirTypeNull)
        ovRefreshDirectory(below, type);
}

} // namespace

System::~System() = default;

void System::Open(const World& world) {
    ovSetMessageFcns(nullptr, nullptr, nullptr);
    m_owner = ovCreatePath(0, "owner of the process's directory");
    m_path = ovCreatePathWithPreFrozen(0, "model", static_cast<const char16_t*>(nullptr),
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

void System::Apply(const World& before, const World& after, const Operation& operation) {
    const std::string& name = PathPool()[operation.a % PathPool().size()];
    const ustring dir = U(name);
    const auto add = [&](ovDirAddLocn where) {
        const bool added = ovGetDirType(ovAddDir(m_path, dir, where)) == ovDirTypePath;
        Expect(added != before.IsOnPath(name), "answer to adding");
    };
    switch (operation.kind) {
    case Kind::AddAtBegin:
        add(ovDirAddAtBegin);
        break;
    case Kind::AddAtEnd:
        add(ovDirAddAtEnd);
        break;
    case Kind::AddFrozen:
        ovSetFreezeAllAddedDirectories(m_path, true);
        add(ovDirAddAtEnd);
        ovSetFreezeAllAddedDirectories(m_path, false);
        break;
    case Kind::Remove:
        ovRemoveDir(Find(name));
        break;
    case Kind::Replace: {
        std::string list;
        for (const std::string& token : World::Choice(operation))
            list += token + ";";
        Expect(ovReplacePath(m_path, U(list)) == after.changed, "answer to replacing");
        break;
    }
    case Kind::ChangeCWD:
        Expect(ovSetCWDName(m_path, U(CWDPool()[operation.a % CWDPool().size()])) == nullptr, "no change");
        break;
    case Kind::Freeze:
        ovRefreshAllDirectories(m_path, ovRefreshCheck);
        ovFreeze(Find(name));
        break;
    case Kind::Thaw:
        ovUnFreeze(Find(name));
        ovRefreshAllDirectories(m_path, ovRefreshReload);
        break;
    case Kind::Hide:
        ovHideCWD(m_path, after.canHide);
        break;
    case Kind::Unhide:
        ovHideCWD(m_path, false);
        ovRefreshAllDirectories(m_path, ovRefreshReload);
        break;
    case Kind::Mark:
        Mark(after, operation);
        break;
    case Kind::Refresh:
    case Kind::RefreshOne:
        Refresh(after, operation);
        break;
    case Kind::SetTime:
        SetTime(after.Place(operation.a), ++m_count);
        break;
    case Kind::Tick:
        Tick(operation.a % 3, operation.b % 4 == 0);
        break;
    case Kind::KeepHandle:
        m_handles.push_back(ovFindDirFullName(m_path, U(after.Place(operation.a))));
        break;
    case Kind::DropHandles:
        m_handles.clear();
        break;
    case Kind::Listen:
        m_interests.push_back(ovRegisterPathInterest(m_path, [](ovEventType, ovDir about) {
            if (!ovIsDirHandleValid(about))
                return; // a callback before has removed it
            EXPECT_EQ(ovGetDirType(about) == ovDirTypeNull, ovGetDirName(about).empty());
        }));
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
    case Kind::Interfere:
        Interfere(before, after, operation);
        break;
    default:
        ChangeDisk(before.disk, after.disk);
        break;
    }
    if (after.reloads)
        ovRefreshAllDirectories(m_path, ovRefreshReload);
}

void System::Refresh(const World& world, const Operation& operation) {
    const auto type = static_cast<ovDirRefreshType>(World::RefreshType(operation));
    if (type > ovRefreshReloadFrozen)
        ovSetAllChanged(m_path);
    if (operation.kind == Kind::RefreshOne)
        ovRefreshDirectory(Find(PathPool()[operation.a % PathPool().size()]), type);
    else if (operation.b % 3 == 0 && type <= ovRefreshReload)
        for (ovDir dir = ovGetCWD(m_path); ovGetDirType(dir) != ovDirTypeNull; dir = ovGetNextPathDir(dir))
            RefreshEach(dir, type);
    else
        ovRefreshAllDirectories(m_path, type);
    // What a forced reload found new below a frozen directory is not frozen by itself.
    for (const std::string& name : world.frozen)
        ovFreeze(Find(name));
}

/// In the middle of a change of the disk, callbacks do at every event what they like, and throw. What the
/// path is then depends on the order of the events; but nothing is broken, and the next refresh makes all
/// right.
void System::Interfere(const World& before, const World& after, const Operation& operation) {
    static const std::vector kinds{Kind::AddAtBegin,    Kind::AddAtEnd,   Kind::Remove,      Kind::Replace,
                                   Kind::ChangeCWD,     Kind::Refresh,    Kind::Refresh,     Kind::RefreshOne,
                                   Kind::Mark,          Kind::KeepHandle, Kind::DropHandles, Kind::Listen,
                                   Kind::StopListening, Kind::Search,     Kind::AddFrozen,   Kind::Freeze,
                                   Kind::Thaw,          Kind::Hide,       Kind::Unhide};
    const bool freezes = operation.b % 2 == 0;
    Enter(before);
    World changing = before;
    for (unsigned i = 0; i < 3; ++i) {
        const Disk disk = changing.disk;
        changing.Apply(World::Change(operation, i));
        ChangeDisk(disk, changing.disk);
    }
    std::minstd_rand random(operation.a ^ operation.b ^ operation.c);
    const auto number = [&] { return static_cast<unsigned>(random()); };
    const auto act = [&] {
        Apply(after, after,
              {kinds[number() % (kinds.size() - (freezes ? 0 : 5))], number(), number(), number()});
    };
    m_isPredictable = false;
    int left = 40;
    const auto interest = ovRegisterPathInterest(m_path, [&](ovEventType, ovDir) {
        if (left <= 0 || number() % 3 == 0)
            return;
        --left;
        act();
        if (number() % 8 == 0)
            throw std::runtime_error("a callback has enough");
    });
    for (int i = 0; i < 3; ++i)
        act();
    ovCancelPathInterest(interest);
    ovSetFreezeAllAddedDirectories(m_path, false); // a callback's may have ended in the middle
    ovHideCWD(m_path, false);
    m_isPredictable = true;
    m_faults += Faults();
    ovRefreshAllDirectories(m_path, freezes ? ovRefreshReloadFrozen : ovRefreshCheck);
    const Names listed = Listed();
    World seen = after;
    seen.knowsOrder = false;
    seen.cwd.name = listed.front();
    seen.path.clear();
    for (std::size_t i = 1; i < listed.size(); ++i)
        seen.path.push_back({listed[i], Dir::Kind::Path, {}, {}, {}});
    seen.ReadAnew();
    m_faults += Difference(seen, *this, operation.a);
    Enter(after);
}

void System::Mark(const World& world, const Operation& operation) {
    const ustring name = U(world.Place(operation.a));
    switch (operation.b % 6) {
    case 0:
        return ovSetAllChanged(m_path);
    case 1:
        return ovChangedUnknownDir(m_path);
    case 2:
        return ovSetDirChanged(ovFindDirFullName(m_path, name));
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
    const unsigned way = ++m_count;
    if (question.form == Form::ClassFile)
        return ClassFile(m_path, question, extensions);
    if (question.form == Form::FirstFile)
        return FirstFile(m_path, question, extensions, way % 2 == 0);
    const ::Search search(Create(m_path, question, extensions));
    if (question.form == Form::Dirs)
        return Dirs(search.Get());
    if (question.form == Form::Files)
        return Files(search.Get(), way);
    return Walk(
        Wide([&](ovDir* dir, ustring& name) { return ovFindNextUnspecified(search.Get(), dir, name); }), {});
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
