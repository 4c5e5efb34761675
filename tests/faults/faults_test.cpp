#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>

#include "faults/faults.hpp"
#include "host_interfaces/filesystem.hpp"
#include "linux_hooks/linux_hooks.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/reading/changediagnostics.hpp"
#include "support/fake_disk.hpp"
#include "support/fake_platform.hpp"
#include "support/fake_storage.hpp"
#include "support/invariants.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace {

using namespace faults;

struct {
    const char* name;
    bool throws, answers;
} const rows[] = {
#define FAULTS_ROW(id, ...) {__VA_ARGS__}, // NOLINT
    FAULTS_OPERATIONS(FAULTS_ROW)
#undef FAULTS_ROW
};

// The host, with a fault in front of each of its operations.

/// Giving back has no way to fail.
class FaultyPlatform : public FakePlatform {
  public:
    using Base = FakePlatform;
    std::uint32_t GetDriveType(const ustring& root) override {
        return Call(DriveType, host::DriveNoRoot, [&] { return Base::GetDriveType(root); });
    }
    ustring FullPath(const ustring& name) override {
        return Call(Expansion, ustring(), [&] { return Base::FullPath(name); });
    }
    std::int64_t CurrentTime() override {
        return Call(Clock, [&] { return now; });
    }
    bool LocalTime(std::int64_t seconds, std::tm& result) override {
        return Call(CalendarTime, false, [&] { return Base::LocalTime(seconds, result); });
    }
    std::uint32_t CurrentProcessId() override {
        return Call(ProcessId, [&] { return Base::CurrentProcessId(); });
    }
    host::ChangeHandle FindFirstChangeNotification(const ustring& name, bool tree,
                                                   std::uint32_t kinds) override {
        const auto open = [&] { return Base::FindFirstChangeNotification(name, tree, kinds); };
        return Call(OpenWatch, host::InvalidChangeHandle, open);
    }
    bool FindNextChangeNotification(host::ChangeHandle handle) override {
        return Call(RearmWatch, false, [&] { return Base::FindNextChangeNotification(handle); });
    }
    bool FindCloseChangeNotification(host::ChangeHandle handle) override {
        const Armed quiet(false);
        return Base::FindCloseChangeNotification(handle);
    }
    std::uint32_t WaitForSingleObject(host::ChangeHandle handle, std::uint32_t milliseconds) override {
        return Call(WaitWatch, host::WaitFailed,
                    [&] { return Base::WaitForSingleObject(handle, milliseconds); });
    }
    void BeginChangeChecks() override {
        Call(BeginChecks, [&] { Base::BeginChangeChecks(); });
    }
    bool WriteProbeFile(const ustring& name, std::string_view text) override {
        return Call(ProbeFile, false, [&] { return Base::WriteProbeFile(name, text); });
    }
};

class FaultyBytes : public std::streambuf {
  public:
    explicit FaultyBytes(std::unique_ptr<std::streambuf> bytes) : m_bytes(std::move(bytes)) {}

  protected:
    int_type underflow() override {
        const auto length = Call(ReadBytes, [&] { return m_bytes->sgetn(m_block, sizeof(m_block)); });
        setg(m_block, m_block, m_block + length);
        return length == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        return Call(WriteBytes, [&] { return m_bytes->sputn(text, length); });
    }
    int sync() override {
        return Call(WriteBytes, [&] { return m_bytes->pubsync(); });
    }

  private:
    std::unique_ptr<std::streambuf> m_bytes;
    char m_block[512];
};

class FaultyStorage : public FakeStorage {
  public:
    using Bytes = std::unique_ptr<std::streambuf>;
    std::vector<Entry> ListAll(const AbsoluteIRI& folder) const override {
        return Call(ListFolder, [&] { return FakeStorage::ListAll(folder); });
    }
    bool FolderExists(const AbsoluteIRI& folder) const override {
        return Call(ExistsFolder, [&] { return FakeStorage::FolderExists(folder); });
    }
    Bytes OpenForReading(const AbsoluteIRI& file) const override {
        return Call(OpenToRead,
                    [&] { return std::make_unique<FaultyBytes>(FakeStorage::OpenForReading(file)); });
    }
    Bytes OpenForWriting(const AbsoluteIRI& file) const override {
        return Call(OpenToWrite,
                    [&] { return std::make_unique<FaultyBytes>(FakeStorage::OpenForWriting(file)); });
    }
};

bool InstallFaultyHooks() {
    return ovSetDefaultIOFcns(
        [](ovPath path, const ustring& name, unsigned short** words) {
            const auto list = [&] { return FakeDisk::Read(path, name, words); };
            return Call(ListHook, static_cast<char16_t*>(nullptr), list);
        },
        [](ovPath path, const ustring& name) {
            return Call(AccessHook, ovDirAccessFailure, [&] { return FakeDisk::Accessibility(path, name); });
        },
        &FakeDisk::Reserved,
        [](ovPath path, const ustring& name) {
            return Call(ExistsHook, false, [&] { return FakeDisk::Exists(path, name); });
        },
        [](ovPath path, const ustring& name) {
            return Call(TimeHook, 0L, [&] { return FakeDisk::FileTime(path, name); });
        });
}

void Hear(const char*) {
    Call(MessageHook, [] {});
}

/// What the library stands on: `L:` is local and `R:` remote. In force as long as it lives.
class Ground {
  public:
    explicit Ground(bool isReal) {
        if (isReal) {
            linux_hooks::InstallDefaultHooks();
            linux_host::DriveMap::Add(u"L:", m_tree.Path("L"), linux_host::DriveMap::Kind::Fixed);
            linux_host::DriveMap::Add(u"R:", m_tree.Path("R"), linux_host::DriveMap::Kind::Remote);
            return;
        }
        m_fake.emplace();
        m_fake->driveTypes[u"R:\\"] = 4;
        m_fake->refusesAt = [](const ustring& name) { return name.starts_with(u"R:"); };
        InstallFaultyHooks();
        linux_host::testing::SetStorageSystem(std::make_shared<FaultyStorage>());
        Put(N(fl::filesystem::current_path()), ""), Put(N(NameOf("")), "");
    }
    ~Ground() {
        linux_host::testing::SetStorageSystem(nullptr);
        linux_host::DriveMap::Reset();
        FakeDisk::Get() = FakeDisk();
    }
    Ground(const Ground&) = delete;
    Ground& operator=(const Ground&) = delete;

    /// Entries as FakeDisk has them; on the real disk `?` makes a link, which leads to a folder from `sub`.
    void Put(const std::string& dir, const std::string& entries) {
        if (!m_fake)
            return PutReally(dir.substr(0, 1) + dir.substr(2), entries);
        m_fake->now += 10;
        FakeDisk::Get().Put(dir, entries);
        if (entries.find("sub?") != std::string::npos)
            FakeDisk::Get().Put(dir + "\\sub", "");
        FakeDisk::Get().times[dir] = static_cast<long>(m_fake->now);
        m_fake->now += 10;
        m_fake->fullPaths[U(dir)] = U(dir);
        m_fake->Signal(U(dir));
    }
    std::size_t Handles() const {
        return m_fake ? m_fake->handles.size() : linux_host::GetCounters().handles;
    }
    /// The full name of a file on the real disk.
    ustring NameOf(const std::string& file) const {
        return linux_host::DriveMap::ToName(m_tree.Path(file)).value();
    }

  private:
    void PutReally(std::string folder, const std::string& entries) {
        std::replace(folder.begin(), folder.end(), '\\', '/');
        m_tree.Add({folder + "/"});
        std::istringstream words(entries);
        using Words = std::istream_iterator<std::string>;
        std::set<std::string> wanted{Words(words), Words()};
        for (const auto& entry : std::filesystem::directory_iterator(m_tree.Path(folder))) {
            const std::string name = entry.path().filename();
            if (!wanted.erase(name) && !wanted.erase(name + "/") && !wanted.erase(name + "?"))
                std::filesystem::remove_all(entry.path());
        }
        for (const std::string& word : wanted)
            if (word.back() != '?')
                m_tree.Add({folder + "/" + word});
            else
                m_tree.Add({folder + "/" + word.substr(0, word.size() - 1) + " -> " +
                            (word == "sub?" ? m_tree.Path("R") : "nowhere")});
    }

    test::TempTree m_tree = test::TempTree::InMemory();
    std::optional<FaultyPlatform> m_fake;
};

// What a host does in its life, and what it may be asked afterwards.

const ustring cwd = u"L:\\cwd", other = u"L:\\other", dirA = u"L:\\A", dirB = u"R:\\B",
              dirF = u"L:\\F" + ustring(80, u'f'), dirSig = u"L:\\tool\\sig",
              wantedPath = u"R:\\B;L:\\A;L:\\tool\\sig;" + dirF;
const std::string nameF = N(dirF), longName = std::string(80, 'l') + ".extension",
                  wantedText = "L:\\other; R:\\B; L:\\A; L:\\tool\\sig; " + nameF;
const ustring names[] = {u"plot",       u"draw",      u"K",       u"note",  u"sub",     u"pkg\\plot",
                         u"K\\draw.sv", u"pkg\\K\\K", u"tone.sv", u"extra", u"missing", u""};
const char* const classNames[] = {"K", "plot", "pkg.K", "pkg.in.draw"};
const Extensions extensions{"p", "sv"};

class World {
  public:
    explicit World(bool isReal) : m_ground(isReal), m_start(fl::filesystem::current_path()) {
        ovSetMessageFcns(&Hear, &Hear, &Hear);
        ovSetIsClassFcn([](const ustring& name) {
            return Call(ClassHook, false, [&] { return name.find(u"K.") != ustring::npos; });
        });
        linux_host::SetPrintSink([](std::string_view) { Call(PrintSink, [] {}); });
        ovEnableToolboxCacheDiagnosticStatusReport(true);
        ChangeDiagnostics() = Get().plan.operation == MessageHook;
        for (const auto& [dir, entries] : std::initializer_list<std::pair<std::string, std::string>>{
                 {"L:\\cwd", "draw.sv plot.sv @plot/ private/"},
                 {"L:\\cwd\\@plot", "plot.sv draw.p"},
                 {"L:\\cwd\\private", "plot.sv"},
                 {"L:\\other", "plot.sv K.p @K/"},
                 {"L:\\other\\@K", "K.sv"},
                 {"L:\\A", "plot.sv plot.p note? sub? K.sv @K/ +pkg/ private/ data/"},
                 {"L:\\A\\@K", "K.sv draw.sv private/ " + longName},
                 {"L:\\A\\@K\\private", "draw.sv"},
                 {"L:\\A\\+pkg", "plot.sv @K/ +in/"},
                 {"L:\\A\\+pkg\\@K", "K.sv"},
                 {"L:\\A\\+pkg\\+in", "draw.sv"},
                 {"L:\\A\\private", "draw.sv"},
                 {"R:\\B", "plot.sv extra.sv @K/"},
                 {"R:\\B\\@K", "K.sv K.p"},
                 {nameF, "plot.sv"},
                 {"L:\\tool\\sig", "tone.sv +wave/ K.sv"},
                 {"L:\\tool\\sig\\+wave", "plot.sv"}})
            m_ground.Put(dir, entries);
    }
    ~World() {
        m_kept = ovDir();
        m_interest = {};
        m_owner = m_path = ovPath();
        fl::filesystem::current_path(m_start);
        linux_host::SetPrintSink({});
        ovSetIsClassFcn(nullptr);
        ovSetMessageFcns(nullptr, nullptr, nullptr);
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Everything once; then the fault is over, the host puts right what it can see, and refreshes once.
    void Play() {
        Create(), LookAround();
        Change(), LookAround();
        Rearrange(), LookAround();
        UseCache(), Heal();
        CheckIndex("at the end");
        answers = Answers();
        Do([&] { m_kept = ovDir(); });
        Do([&] { ovTerminate(); });
        ovTerminate();
    }

    std::string answers, wrong;

  private:
    /// One thing that the host does; what is thrown is caught, and life goes on.
    template <class Step>
    void Do(Step step) {
        const bool before = Get().fired;
        try {
            const Armed armed;
            step();
        } catch (const std::exception& e) {
            if (!Get().fired)
                wrong += std::string("thrown without a fault: ") + e.what() + "\n";
        }
        if (!before && Get().fired)
            CheckIndex("behind the fault");
    }
    void CheckIndex(const std::string& when) {
        std::size_t notified = 0;
        for (const ovPath& path : {m_owner, m_path})
            if (path != nullptr && path->IsValid()) {
                if (const std::string found = InvariantCheck(path).Run(); !found.empty())
                    wrong += when + ": " + found;
                notified += static_cast<std::size_t>(path->GetNotifiedDirCount());
            }
        if (const std::size_t handles = m_ground.Handles(); handles != notified)
            wrong += when + ": " + std::to_string(handles) + " handles for " + std::to_string(notified) +
                     " records\n";
        if (std::any_of(m_brackets.begin(), m_brackets.end(), [](int depth) { return depth != 0; }))
            wrong += when + ": an end was not told\n";
    }
    ovDir Find(const ustring& name) { return ovFindDirFullName(m_path, name); }

    void Create() {
        const auto owner = [&] { m_owner = ovCreatePath(0, "owner"); };
        const auto path = [&] {
            m_path = ovCreatePathWithPreFrozen(0, "main", u"L:\\tool", ovCaseSensitive, false);
        };
        Do(owner), m_owner == nullptr ? owner() : void();
        Do(path), m_path == nullptr ? path() : void();
        Do([&] {
            const auto told = [this](ovEventType event, ovDir) { Told(event); };
            m_interest = ovRegisterPathInterest(m_path, told);
        });
        ovSetNotificationHandleWarnings(m_path, ovWarnCNHAlways);
        ovSetDirectoryReloadMessages(m_path, true);
        Do([&] { ovNonNotifiedRemotePathRefreshPolicy(m_path, ovRefreshByTimeStamp); });
        Do([&] { ovSetCWDName(m_owner, m_ground.NameOf("")); });
        Do([&] { ovSetCWDName(m_path, cwd); });
        Do([&] { m_kept = ovAddDir(m_path, dirA, ovDirAddAtEnd); });
        Do([&] { ovAddDir(m_path, dirB, ovDirAddAtBegin); });
        Do([&] { ovAddDir(m_path, "L:\\tool\\sig", ovDirAddAtEnd); });
        Do([&] { ovAddDir(m_path, u"L:\\nowhere", ovDirAddAtEnd); });
    }

    /// Begins and ends are counted; whoever is told may ask.
    void Told(ovEventType event) {
        const ovEventType begins[] = {ovEventPathReplaceBegin, ovEventCWDChangeBegin, ovEventRefreshBegin};
        const ovEventType ends[] = {ovEventPathReplaceEnd, ovEventCWDChangeEnd, ovEventRefreshEnd};
        for (std::size_t i = 0; i < m_brackets.size(); ++i)
            m_brackets[i] += (event == begins[i]) - (event == ends[i]);
        Call(Callback, [] {});
        ustring name;
        ovFindFirstFileInAll(m_path, names[0], nullptr, nullptr, name);
    }

    /// One name in each scope: `use` gets what is found.
    template <class Use>
    void Question(const ustring& name, Use use) {
        const auto walk = [&](ovSearch* created, int (*find)(ovSearch*, ovDir*, ustring&)) {
            const ::Search search(created);
            ustring found;
            for (int match; (match = find(search.Get(), nullptr, found)) != 0;)
                use(match, found);
            use(0, found);
        };
        walk(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath), &ovFindNextFile);
        walk(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath), &ovFindNextUnspecified);
        walk(ovCreatePathOnlySearchIterator(m_path, name, extensions, ovCaseInsensitive), &ovFindNextFile);
        walk(ovCreateMethodSearchIterator(m_path, name, nullptr, ovCaseOfPath), &ovFindNextFile);
        walk(ovCreateDirSearchIterator(Find(dirA), name, nullptr, ovCaseOfPath), &ovFindNextFile);
        walk(ovCreatePrivateSearchIterator(Find(dirA), name, nullptr, ovCaseOfPath), &ovFindNextFile);
        walk(ovCreateDirnameVisibleSearchIterator(m_path, dirA, name, nullptr, ovCaseOfPath),
             &ovFindNextFile);
        const ::Search dirs(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath));
        for (ovDir dir; ovFindNextDir(dirs.Get(), &dir);)
            use(0, ovGetDirName(dir));
    }

    void LookAround() {
        for (const ustring& name : names)
            Do([&] { Question(name, [](int, const ustring&) {}); });
        for (const char* name : classNames)
            Do([&] {
                char buffer[300];
                ovGetClassFile(m_path, name, buffer, sizeof(buffer), extensions);
                ovFindFirstFileInAll(m_path, name, nullptr, nullptr, buffer);
            });
        Do([&] {
            ovTimeStamp_tag stamp{};
            ovGetTimeStampFromDir(Find(dirA), "L:\\A\\plot.sv", &stamp);
            ovHasFileChanged(Find(dirA), "L:\\A\\plot.sv", &stamp, ovUpdateTimeStamp, true);
        });
    }

    void Refresh(ovDirRefreshType type) {
        Do([&] { ovRefreshAllDirectories(m_path, type); });
    }

    /// The disk changes, and the host wants to know of it in each of the ways there are.
    void Change() {
        m_ground.Put("L:\\A", "plot.sv plot.p note? K.sv @K/ @New/ +pkg/ new.sv");
        m_ground.Put("L:\\A\\@New", "New.sv private/");
        m_ground.Put("L:\\A\\@K", "draw.sv K.sv");
        Refresh(ovRefreshCheck);
        m_ground.Put("R:\\B", "plot.sv @K/ +late/");
        m_ground.Put("R:\\B\\+late", "plot.sv K.sv");
        m_ground.Put("L:\\A\\+pkg", "plot.sv K.sv @K/");
        Refresh(ovRefreshReload);
        Do([&] { ovAddDir(m_path, dirF, ovDirAddAtEnd); });
        Do([&] { ovFreeze(Find(dirF)); });
        m_ground.Put(nameF, "plot.sv frozen.sv @K/");
        m_ground.Put(nameF + "\\@K", "K.sv");
        Do([&] { ovRefreshDirectory(Find(dirF), ovRefreshReloadFrozen); });
        Do([&] { ovUnFreeze(Find(dirF)); });
        m_ground.Put(nameF, "thawed.sv plot.p @K/");
        m_ground.Put("L:\\cwd", "plot.p draw.sv private/");
        Do([&] { ovSetDirChanged(m_path, "L:\\A\\@Newer"); });
        Do([&] { ovSetFullnameChanged(m_path, u"L:\\elsewhere\\plot.sv"); });
        Do([&] { ovSetDirChanged(Find(dirB)); });
        Do([&] { ovFreeze(Find(dirB)); });
        Do([&] { ovUnFreeze(Find(dirB)); });
        Refresh(ovRefreshCheck);
    }

    void Rearrange() {
        Do([&] { ovReplacePath(m_path, dirF + u";L:\\A;L:\\nowhere;L:\\other;L:\\tool\\sig"); });
        Do([&] { ovRemoveDir(Find(other)); });
        Do([&] { ovHideCWD(m_path, true); });
        Refresh(ovRefreshReload);
        Do([&] { ovHideCWD(m_path, false); });
        Do([&] { ovDeleteNonExistentDirectories(m_path); });
        Do([&] { ovSetCWDName(m_path, other); });
    }

    void UseCache() {
        const ustring file = m_ground.NameOf("cache.xml");
        const std::string narrow = N(file);
        Do([&] { ovWritePathToCacheFile(m_path, narrow.c_str()); });
        Do([&] { ovRemoveDir(Find(dirSig)); });
        for (int i = 0; i < 2; ++i)
            Do([&] { ovUseToolboxCache(m_path, file, u"L:\\tool", true); });
        Do([&] { ovAddDir(m_path, dirSig, ovDirAddAtEnd); });
        Do([&] { ovRefreshDirectory(Find(dirSig), ovRefreshReloadFrozen); });
        LookAround();
        Do([&] { ovRevertFromToolboxCache(m_path); });
        m_ground.Put("L:\\A", "plot.sv K.sv @New/ +pkg/ private/ last.sv");
        m_ground.Put("L:\\A\\private", "plot.sv");
        m_ground.Put("L:\\other", "plot.p K.p");
        Refresh(ovRefreshCheck);
        // What has been read late has to be watched like the rest.
        m_ground.Put("L:\\other", "plot.p K.p @K/");
        Do([&] { ovReplacePath(m_path, wantedPath); });
    }

    /// By an exception the host was told, and the library knows what it has not read: a check is enough. A
    /// failure that was an answer was believed, and only a reload asks again.
    void Heal() {
        if (ovInToolboxCacheMode())
            ovRevertFromToolboxCache(m_path);
        ovHideCWD(m_path, false);
        if (ovGetCWDName(m_path) != other)
            ovSetCWDName(m_path, other);
        if (PathText(m_path) != wantedText)
            ovReplacePath(m_path, wantedPath);
        for (const ustring& thawed : {dirB, dirF})
            if (ovIsFrozen(Find(thawed))) {
                ovUnFreeze(Find(thawed));
                ovRefreshDirectory(Find(thawed), ovRefreshReload);
            }
        const bool wasTold = Get().plan.way == Way::Throws;
        ovRefreshAllDirectories(m_path, wasTold ? ovRefreshCheck : ovRefreshReloadFrozen);
    }

    /// Which of a directory's files comes first depends on what was read when; so does a walk over all.
    std::string Answers() {
        std::string text = PathText(m_path);
        for (const ustring& name : names) {
            std::vector<std::string> found;
            Question(name, [&](int match, const ustring& file) {
                found.push_back(std::to_string(match) + " " + N(file));
            });
            if (name.empty())
                std::sort(found.begin(), found.end());
            text += "\n" + N(name) + ": " + Join(found);
        }
        for (const char* name : classNames) {
            ustring file;
            ovGetClassFile(m_path, name, file, extensions);
            text += std::string("\nclass ") + name + ": " + N(file);
        }
        return text;
    }

    Ground m_ground;
    const ustring m_start;
    ovPath m_owner, m_path;
    ovRegisteredInterest m_interest;
    ovDir m_kept;
    std::array<int, 3> m_brackets{};
};

struct Outcome {
    std::string answers, wrong;
};

/// What has to be given back besides memory.
std::size_t Held() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return linux_host::GetCounters().watches +
           static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

Outcome Run(bool isReal, const Plan& plan) {
    const long blocks = Get().liveBlocks;
    const std::size_t held = Held();
    Get() = {.plan = plan, .liveBlocks = blocks};
    Outcome outcome;
    {
        World world(isReal);
        world.Play();
        outcome = {std::move(world.answers), std::move(world.wrong)};
    }
    const auto owned = [](const std::string& text) { return text.capacity() > 15 ? 1 : 0; };
    const long left = Get().liveBlocks - blocks - owned(outcome.answers) - owned(outcome.wrong);
    if (left != 0 || Held() != held)
        outcome.wrong +=
            std::to_string(left) + " blocks and " + std::to_string(Held() - held) + " others left\n";
    return outcome;
}

/// Each call of the operation in turn, or a sample of them.
/// @return how many there were.
long Inject(bool isReal, Plan plan, long stride, const std::string& expected) {
    long count = 0;
    for (plan.number = 1;; plan.number += stride, ++count) {
        Outcome outcome = Run(isReal, plan);
        if (!Get().fired)
            return count;
        if (!outcome.wrong.empty())
            outcome = Run(isReal, plan); // what is made once for the process, on this way, is there now
        EXPECT_EQ("", outcome.wrong);
        EXPECT_EQ(expected, outcome.answers);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << rows[plan.operation].name << (plan.way == Way::Throws ? " throws" : " answers")
                          << (plan.form == Form::Once ? " at call " : " from call ") << plan.number;
            return count;
        }
    }
}

/// Every operation up to the last, in each way and form. Without OVSEL_FAULT_STRIDE in the environment about
/// @p sample of the calls of each.
void InjectAll(bool isReal, Operation last, long sample) {
    Run(isReal, {}); // what is made once for the process
    const Outcome clean = Run(isReal, {});
    ASSERT_EQ("", clean.wrong);
    const std::array<long, OperationCount> calls = Get().calls;
    const char* const stride = std::getenv("OVSEL_FAULT_STRIDE");
    long total = 0;
    for (int i = 0; i <= last && !testing::Test::HasFailure(); ++i) {
        const long step = stride ? std::atol(stride) : calls[i] / sample;
        long count = 0;
        for (const Way way : {Way::Throws, Way::Answers})
            for (const Form form : {Form::Once, Form::FromThenOn})
                if (way == Way::Throws ? rows[i].throws : rows[i].answers)
                    count += Inject(isReal, {static_cast<Operation>(i), way, form}, std::max(1L, step),
                                    clean.answers);
        std::printf("%-24s %6ld calls %7ld faults\n", rows[i].name, calls[i], count);
        total += count;
    }
    std::printf("all %ld faults\n", total);
}

TEST(Faults, LeaveAPathThatOneRefreshPutsRight) { InjectAll(false, HostBlock, 10); }

TEST(Faults, OfMemoryLeaveTheRealHostInOrder) { InjectAll(true, Memory, 40); }

} // namespace
