#include "model/systems.hpp"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "model/difference.hpp"
#include "ovsel/frame/iohooks.hpp"
#include "support/texts.hpp"

namespace model {

namespace {

const std::string& PathDirOf(const Operation& operation) { return PathPool[operation.a % PathPool.size()]; }
const std::string& CWDOf(const Operation& operation) { return CWDPool[operation.a % CWDPool.size()]; }

/// How to refresh. 9 stands for all that is no type.
ovDirRefreshType TypeOf(const Operation& operation, bool one = false) {
    const unsigned types[] = {1, 2, 3, 0, 1, one ? 1U : 9U};
    return static_cast<ovDirRefreshType>(types[operation.a % std::size(types)]);
}

const auto nothing = [](World&, const Operation&) {};
/// What a hook does while callbacks interfere. @return whether it did anything.
std::function<bool()> g_disturb;

auto Change(DiskChange change) {
    return [=](World& world, const Operation& operation) { world.ChangeDisk(change, operation); };
}

/// Callbacks may let any of them go.
void RefreshEach(const std::vector<ovDir>& dirs, ovDirRefreshType type) {
    for (const ovDir& dir : dirs) {
        if (!ovIsDirHandleValid(dir) || ovGetDirType(dir) == ovDirTypeNull)
            continue;
        std::vector<ovDir> below{ovGetPrivateDir(dir)};
        for (const auto next : {&ovGetMethodDirs, &ovGetPackageDirs})
            for (ovDir one = next(dir, dir); ovGetDirType(one) != ovDirTypeNull; one = next(dir, one))
                below.push_back(one);
        ovRefreshDirectory(dir, type);
        RefreshEach(below, type);
    }
}

} // namespace

const std::vector<System::Command> System::Commands{
    {"add at begin", 1, By::Callbacks, [](World& w, auto& op) { w.Add(PathDirOf(op), true); },
     [](System& s, auto& step) { s.Add(step, ovDirAddAtBegin); }},
    {"add at end", 4, By::Callbacks, [](World& w, auto& op) { w.Add(PathDirOf(op), false); },
     [](System& s, auto& step) { s.Add(step, ovDirAddAtEnd); }},
    {"add frozen", 1, By::CallbacksThatFreeze, [](World& w, auto& op) { w.Add(PathDirOf(op), false, true); },
     [](System& s, auto& step) {
         ovSetFreezeAllAddedDirectories(s.m_path, true);
         s.Add(step, ovDirAddAtEnd);
         ovSetFreezeAllAddedDirectories(s.m_path, false);
     }},
    {"remove", 1, By::Callbacks, [](World& w, auto& op) { w.Remove(PathDirOf(op)); },
     [](System& s, auto& step) { ovRemoveDir(s.Find(PathDirOf(step.operation))); }},
    {"replace", 4, By::Callbacks, [](World& w, auto& op) { w.Replace(World::Choice(op)); },
     [](System& s, auto& step) {
         const bool changed = ovReplacePath(s.m_path, U(Join(World::Choice(step.operation), ";")));
         s.Expect(changed == step.after.changed, "answer to replacing");
     }},
    {"change directory", 1, By::Callbacks, [](World& w, auto& op) { w.ChangeCWD(CWDOf(op)); },
     [](System& s, auto& step) {
         s.Expect(ovSetCWDName(s.m_path, U(CWDOf(step.operation))) == nullptr, "no change");
     }},
    {"look and freeze", 1, By::CallbacksThatFreeze, [](World& w, auto& op) { w.Freeze(PathDirOf(op)); },
     [](System& s, auto& step) {
         ovRefreshAllDirectories(s.m_path, ovRefreshCheck);
         ovFreeze(s.Find(PathDirOf(step.operation)));
     }},
    {"thaw and reload", 1, By::CallbacksThatFreeze, [](World& w, auto& op) { w.Thaw(PathDirOf(op)); },
     [](System& s, auto& step) {
         ovUnFreeze(s.Find(PathDirOf(step.operation)));
         ovRefreshAllDirectories(s.m_path, ovRefreshReload);
     }},
    {"hide", 1, By::CallbacksThatFreeze, [](World& w, auto&) { w.Hide(); },
     [](System& s, auto& step) { ovHideCWD(s.m_path, step.after.canHide); }},
    {"unhide and reload", 1, By::CallbacksThatFreeze, [](World& w, auto&) { w.Unhide(); },
     [](System& s, auto&) {
         ovHideCWD(s.m_path, false);
         ovRefreshAllDirectories(s.m_path, ovRefreshReload);
     }},
    {"mark as changed", 1, By::Callbacks, nothing, [](System& s, auto& step) { s.Mark(step); }},
    {"refresh", 4, By::Callbacks, [](World& w, auto& op) { w.Refresh(TypeOf(op) == ovRefreshReloadFrozen); },
     [](System& s, auto& step) { s.Refresh(step, false); }},
    {"refresh one", 1, By::Callbacks,
     [](World& w, auto& op) { w.RefreshOne(PathDirOf(op), TypeOf(op, true) == ovRefreshReloadFrozen); },
     [](System& s, auto& step) { s.Refresh(step, true); }},
    {"put", 4, By::Host, Change(DiskChange::Put), &System::FollowDisk},
    {"erase", 4, By::Host, Change(DiskChange::Erase), &System::FollowDisk},
    {"swap", 4, By::Host, Change(DiskChange::Swap), &System::FollowDisk},
    {"rename", 1, By::Host, Change(DiskChange::Rename), &System::FollowDisk},
    {"rewrite", 1, By::Host, Change(DiskChange::Rewrite), &System::FollowDisk},
    {"link", 1, By::Host, Change(DiskChange::Link), &System::FollowDisk},
    {"set a folder's time", 1, By::Host, nothing,
     [](System& s, auto& step) { s.SetTime(step.after.Place(step.operation.a), ++s.m_count); }},
    {"let time pass", 1, By::Host, nothing,
     [](System& s, auto& step) { s.Tick(step.operation.a % 3, step.operation.b % 4 == 0); }},
    {"keep a handle", 1, By::Callbacks, nothing,
     [](System& s, auto& step) {
         s.m_handles.push_back(ovFindDirFullName(s.m_path, U(step.after.Place(step.operation.a))));
     }},
    {"drop all handles", 1, By::Callbacks, nothing, [](System& s, auto&) { s.m_handles.clear(); }},
    {"listen", 1, By::Callbacks, nothing, [](System& s, auto&) { s.Listen(); }},
    {"stop listening", 1, By::Callbacks, nothing, [](System& s, auto&) { s.StopListening(); }},
    {"search a few steps", 1, By::Callbacks, nothing,
     [](System& s, auto& step) { s.WalkABit(step.operation); }},
    {"interfere", 8, By::Host, [](World& w, auto& op) { w.Interfere(op); },
     [](System& s, auto& step) { s.Interfere(step); }},
};

void World::Apply(const Operation& operation) {
    const bool wasOnPath = IsOnPath(cwd.name);
    reloads = false;
    System::Commands[operation.command].foresee(*this, operation);
    reloads = hidden && (reloads || wasOnPath != IsOnPath(cwd.name));
    if (reloads)
        Refresh(false);
}

void System::Apply(const Step& step) {
    Commands[step.operation.command].perform(*this, step);
    if (step.after.reloads)
        ovRefreshAllDirectories(m_path, ovRefreshReload);
}

void System::FollowDisk(const Step& step) { ChangeDisk(step.before.disk, step.after.disk); }

void System::Add(const Step& step, ovDirAddLocn where) {
    const std::string& name = PathDirOf(step.operation);
    const bool added = ovGetDirType(ovAddDir(m_path, U(name), where)) == ovDirTypePath;
    Expect(added != step.before.IsOnPath(name), "answer to adding");
}

void System::Refresh(const Step& step, bool one) {
    const ovDirRefreshType type = TypeOf(step.operation, one);
    if (type > ovRefreshReloadFrozen)
        ovSetAllChanged(m_path);
    if (one)
        ovRefreshDirectory(Find(PathDirOf(step.operation)), type);
    else if (step.operation.b % 3 == 0 && type <= ovRefreshReload) {
        std::vector<ovDir> dirs;
        for (ovDir dir = ovGetCWD(m_path); ovGetDirType(dir) != ovDirTypeNull; dir = ovGetNextPathDir(dir))
            dirs.push_back(dir);
        RefreshEach(dirs, type);
    } else
        ovRefreshAllDirectories(m_path, type);
    // What a forced reload found new below a frozen directory is not frozen by itself.
    for (const std::string& name : step.after.frozen)
        ovFreeze(Find(name));
}

/// Tells the library that something changed, in one of the ways to do so.
void System::Mark(const Step& step) {
    const ustring name = U(step.after.Place(step.operation.a));
    const std::function<void()> ways[] = {[&] { ovSetAllChanged(m_path); },
                                          [&] { ovChangedUnknownDir(m_path); },
                                          [&] { ovSetDirChanged(ovFindDirFullName(m_path, name)); },
                                          [&] { ovSetDirChanged(m_path, name); },
                                          [&] { ovSetDirRemoved(m_path, name); },
                                          [&] { ovSetFullnameChanged(m_path, name + u"\\plot.sv"); },
                                          [&] { // takes the times of now for those of the last look
                                              ovNonNotifiedRemotePathRefreshPolicy(m_path,
                                                                                   ovRefreshByTimeStamp);
                                              ovSetAllChanged(m_path);
                                          }};
    ways[step.operation.b % std::size(ways)]();
}

void System::Listen() {
    m_interests.push_back(ovRegisterPathInterest(m_path, [](ovEventType, ovDir about) {
        if (!ovIsDirHandleValid(about))
            return; // a callback before has removed it
        EXPECT_EQ(ovGetDirType(about) == ovDirTypeNull, ovGetDirName(about).empty());
    }));
}

/// The one that there was goes by removal or with its last handle.
void System::ReplacePath(const World& world, bool removes) {
    if (removes)
        ovRemovePath(m_path);
    m_interests.clear();
    m_interference = {};
    CreatePath(world);
}

void System::StopListening() {
    if (m_interests.empty())
        return;
    ovCancelPathInterest(m_interests.back());
    m_interests.pop_back();
}

/// And leaves the search there.
void System::WalkABit(const Operation& operation) {
    const ustring name = operation.b % 2 == 0 ? u"plot" : u"";
    Search search(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath));
    for (unsigned i = operation.a % 4; i > 0; --i)
        i % 2 == 0 ? search.Step() : search.Step(&ovFindNextUnspecified);
}

/// Lets hooks do at every message and every look at a time what callbacks do.
void System::HearOfAll(bool on) {
    static const auto disturb = [](const char*) { g_disturb(); };
    const auto time = [](ovPath path, const ustring& name) {
        g_disturb();
        return IOHooks::Defaults().m_fileTimeFcn(path, name);
    };
    const ovMessageFcn hear = on ? +disturb : nullptr;
    ovSetMessageFcns(hear, hear, hear);
    ovSetNotificationHandleWarnings(m_path, on ? ovWarnCNHAlways : ovWarnCNHNever);
    ovSetDirectoryReloadMessages(m_path, on);
    ovSetIOFcns(m_path, nullptr, nullptr, nullptr, nullptr, on ? +time : nullptr);
}

/// In the middle of a change of the disk, callbacks do at every event what they like, throw, and let the path
/// itself go for another; hooks for messages and times do the same, but do not throw. What the path is then
/// depends on the order of the events; but nothing is broken, and the next refresh makes all right. All is
/// new after it.
void System::Interfere(const Step& step) {
    const Operation& operation = step.operation;
    const World &before = step.before, &after = step.after;
    const bool freezes = operation.b % 2 == 0;
    std::vector<std::size_t> commands;
    for (std::size_t i = 0; i < Commands.size(); ++i)
        if (Commands[i].by == By::Callbacks || (freezes && Commands[i].by == By::CallbacksThatFreeze))
            commands.push_back(i);
    Enter(before);
    World changing = before;
    for (unsigned i = 0; i < 3; ++i) {
        const Disk disk = changing.disk;
        changing.ChangeMeanwhile(operation, i);
        ChangeDisk(disk, changing.disk);
    }
    std::minstd_rand random(operation.a ^ operation.b ^ operation.c);
    const auto number = [&] { return static_cast<unsigned>(random()); };
    const auto act = [&] {
        Apply({{commands[number() % commands.size()], number(), number(), number()}, after, after});
    };
    m_isPredictable = false;
    int left = 40;
    g_disturb = [&] {
        if (left <= 0 || number() % 3 == 0)
            return false;
        --left;
        act();
        return true;
    };
    m_interference = ovRegisterPathInterest(m_path, [&](ovEventType event, ovDir) {
        if (event == ovEventPathRemoved || !g_disturb())
            return;
        if (operation.c % 4 == 0 && number() % 8 == 0)
            return ReplacePath(after, operation.c % 8 == 0); // with all that is captured here
        if (number() % 8 == 0)
            throw std::runtime_error("a callback has enough");
    });
    HearOfAll(operation.a % 2 == 0);
    for (int i = 0; i < 3; ++i)
        act();
    HearOfAll(false);
    g_disturb = [] { return false; };
    ovCancelPathInterest(m_interference);
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

} // namespace model
