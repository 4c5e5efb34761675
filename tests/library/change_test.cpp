#include "support/path_fixture.hpp"

#include "ovsel/reading/changediagnostics.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace {

const char* const refusedLocally = "couldNotGetHandleLocalChangeNotification";
const char* const unsupported = "noSupportRemoteChangeNotification";
const char* const ranOut = "ranOutOfHandlesRemoteChangeNotification";
const char* const silent = "nonResponsiveRemoteChangeNotification";

/// Directories that change, under a platform whose handles, clock and drives the test sets.
class Change : public PathFixture {
  protected:
    Change() {
        for (const char* name : {"C:\\A", "R:\\A", "R:\\B", "R:\\C", "C:\\R"})
            disk.Put(name, "f.sv");
        for (const char* name : {"R:\\A", "R:\\B", "R:\\C", "R:\\A\\@K", "R:\\A\\private"})
            platform.fullPaths[U(name)] = U(name);
        platform.driveTypes[u"R:\\"] = host::DriveRemote;
        TakeMessages();
    }
    ~Change() override { ChangeDiagnostics() = false; }

    static std::string Warning(const char* id, const char* dir) { return MessageText('W', id, {U(dir)}); }
    std::string State(const ovDir& dir) {
        return "state " + std::to_string(dir->GetState()) + " policy " +
               std::to_string(dir->GetRefreshPolicy()) + (dir->HasNotificationHandle() ? " handle" : "");
    }
    /// Refreshes everything and tells what was read again.
    std::string Refresh(ovDirRefreshType type = ovRefreshCheck) {
        TakeEvents();
        ovRefreshAllDirectories(path, type);
        CheckIndex();
        std::vector<std::string> loaded;
        for (const std::string& event : events)
            if (event.starts_with("Loaded "))
                loaded.push_back(event.substr(7));
        events.clear();
        return Join(loaded);
    }
};

TEST_F(Change, WithoutAHandleGoesByPolicyAndIsWarnedOfAsRationed) {
    platform.handlesRefused = true;
    const std::tuple<const char*, ovWarnInvalidCNH, const char*, const char*> rows[] = {
        {"C:\\A", ovWarnCNHOnce, "state 1 policy 0", refusedLocally},
        {"C:\\R", ovWarnCNHOnce, "state 1 policy 0", refusedLocally}, // local ones are not counted
        {"R:\\A", ovWarnCNHNever, "state 1 policy 5", nullptr},
        {"R:\\B", ovWarnCNHOnce, "state 1 policy 5", unsupported},
        {"R:\\C", ovWarnCNHOnce, "state 1 policy 5", nullptr}, // one for the file system
        {"R:\\C", ovWarnCNHAlways, "state 1 policy 5", unsupported},
    };
    for (const auto& [name, mode, state, warning] : rows) {
        ovSetNotificationHandleWarnings(path, mode);
        ovRemoveDir(Find(name));
        EXPECT_EQ(state, State(Add(name))) << name;
        EXPECT_EQ(warning ? Warning(warning, name) : "", TakeMessages()) << name;
    }
    EXPECT_EQ(ovRefreshByTimeStamp, ovNonNotifiedRemoteCWDRefreshPolicy(path, ovRefreshNotified));
    ASSERT_EQ(nullptr, ovSetCWDName(path, u"R:\\A"));
    EXPECT_EQ("state 1 policy 2", State(ovGetCWD(path)));
}

TEST_F(Change, OnARemoteDriveIsProbedOnce) {
    disk.Put("R:\\A", "@K/ private/");
    Add("R:\\A");
    EXPECT_EQ("R:\\A\\@K\\$sorven_temp_file$1267", N(platform.probeFiles.at(0))) << "the first to be watched";
    EXPECT_EQ(1u, platform.probeFiles.size());
    EXPECT_EQ("", TakeMessages());
    EXPECT_EQ("", Refresh()) << "the probe's own event is no change";
    const auto add = [&](const ovPath& to, std::initializer_list<const char*> names) {
        for (const char* name : names)
            ovAddDir(to, name, ovDirAddAtEnd);
        return TakeMessages() + " after " + std::to_string(platform.calls["WriteProbeFile"]);
    };
    ovPath other = NewPath("other");
    platform.probeFilesNotified = false;
    EXPECT_EQ(Warning(silent, "R:\\B") + " after 2", add(other, {"R:\\B"}));
    EXPECT_TRUE(ovFindDirFullName(other, "R:\\B")->HasNotificationHandle()) << "it is kept all the same";
    EXPECT_EQ(" after 2", add(other, {"R:\\C"}));
    platform.probeFilesRefused = true;
    EXPECT_EQ(" after 4", add(NewPath("read-only"), {"R:\\B", "R:\\C"}))
        << "a probe that could not be done is tried at the next directory, without a word";
    ovPath disabled = ovCreatePathWithPreFrozen(0, "disabled", "X:", ovCaseSensitive, true);
    platform.handlesRefused = true;
    EXPECT_EQ(" after 4", add(disabled, {"R:\\B"})) << "no probe, and the ration is used up";
}

TEST_F(Change, RunningOutOfHandlesIsNews) {
    ovSetNotificationHandleWarnings(path, ovWarnCNHOnce);
    platform.probeFilesNotified = false;
    Add("R:\\A"); // uses the ration up
    platform.handlesRefused = true;
    Add("R:\\B"), Add("R:\\C");
    EXPECT_EQ(Warning(silent, "R:\\A") + " | " + Warning(ranOut, "R:\\B"), TakeMessages())
        << "only the first refusal behind a success warns afresh";
}

TEST_F(Change, OfAPolicyReachesRemoteDirectoriesWithoutHandlesOnly) {
    disk.Put("R:\\A", "@K/ private/");
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    platform.refusesAt = [](const ustring& name) { return name != u"R:\\B"; };
    const ovDir a = Add("R:\\A");
    Add("R:\\B"), Add("C:\\A");
    ASSERT_EQ(nullptr, ovSetCWDName(path, u"R:\\C"));
    disk.times["R:\\A"] = 5;
    EXPECT_EQ(ovRefreshNever, ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp));
    EXPECT_EQ(ovRefreshByTimeStamp, ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshNotified)) << "asks";
    for (const char* name : {"R:\\A", "R:\\A\\@K", "R:\\A\\private"})
        EXPECT_EQ("state 1 policy 2", State(Find(name)));
    EXPECT_EQ(1u, a->GetChangeTick());
    EXPECT_EQ("state 1 policy 4 handle", State(Find("R:\\B")));
    EXPECT_EQ("state 1 policy 0", State(Find("C:\\A")));
    ovNonNotifiedRemoteCWDRefreshPolicy(path, ovRefreshByTimeStampQuiet);
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshNever);
    EXPECT_EQ("state 1 policy 1", State(ovGetCWD(path))) << "the current directory has a policy of its own";
}

TEST_F(Change, IsNotMissedByTimeAndEndsWhenTheTimeStandsStill) {
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
    platform.handlesRefused = true;
    disk.times["R:\\A"] = platform.now = 1000;
    disk.times["R:\\B"] = 999;
    const ovDir dir = Add("R:\\A");
    Add("R:\\B");
    Listen();
    EXPECT_EQ("R:\\A | R:\\B", Refresh()) << "no reference is as young as either";
    // The folder's time, and what refreshes at those times of the clock do: read, or quiet.
    const std::tuple<long, std::vector<std::int64_t>, const char*> rows[] = {
        {1000, {1000, 1000, 1001, 1002, 1002}, "rrrrq"}, // while more may come, then it is taken over
        {1002, {1002, 1005, 1005}, "rrq"},
        {5000, {1005, 1001, 900}, "rqq"}, // ahead of a clock that is set back
        {10, {1002, 1003}, "rq"},
        {0, {1000, 1001}, "rr"}, // gone
        {10, {1002}, "q"},       // the reference has stayed
    };
    for (const auto& [time, clock, expected] : rows) {
        disk.times["R:\\A"] = time;
        std::string looks;
        for (const std::int64_t now : clock) {
            platform.now = now;
            looks += Refresh().find("R:\\A") == std::string::npos ? 'q' : 'r';
        }
        EXPECT_EQ(expected, looks) << time;
    }
    ChangeDiagnostics() = true;
    TakeMessages();
    ovRefreshDirectory(dir, ovRefreshCheck);
    const ustring text = fl::i18n::message_text({"SORVEN:ovsel", "noChangeTimestampDiagnostic", {}},
                                                fl::i18n::Locale::global());
    EXPECT_EQ(MessageText('I', "timestampDiagnostic", {text, u"10", u"10", u"R:\\A"}), TakeMessages());
}

/// How often somebody outside was called, with and without a host that may hold on to a folder.
std::map<std::string, int> calls;

void NoteCall(const std::string& who) {
    ++calls[who + (static_cast<FakePlatform&>(host::Platform()).amongNeighbours ? " among" : "")];
}

TEST_F(Change, IsLookedForAmongNeighboursWhileNobodyElseIsCalled) {
    platform.handlesRefused = true;
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
    for (const char* name : {"R:\\A", "R:\\B", "R:\\C"})
        Add(name);
    ovSetIOFcns(
        path,
        [](ovPath, const ustring&, unsigned short**) {
            NoteCall("read");
            return static_cast<char16_t*>(nullptr);
        },
        nullptr, nullptr, nullptr,
        [](ovPath, const ustring& name) {
            NoteCall("time");
            return name == u"R:\\B" ? 1'000L : 0L; // only B has changed
        });
    ovSetMessageFcns(nullptr, nullptr, [](const char*) { NoteCall("message"); });
    calls.clear();
    bool again = false;
    const auto interest = ovRegisterPathInterest(path, [&](ovEventType, ovDir) {
        NoteCall("party");
        if (!std::exchange(again, true)) {
            ovRefreshAllDirectories(path, ovRefreshCheck);
            NoteCall("party");
        }
    });
    for (const bool diagnostics : {false, true}) {
        ChangeDiagnostics() = diagnostics;
        again = false;
        ovRefreshAllDirectories(path, ovRefreshCheck);
    }
    ovCancelPathInterest(interest);
    EXPECT_GE(calls["time among"], 3);
    for (const char* who : {"read", "message", "party"}) {
        EXPECT_TRUE(calls[who] > 0 || IsVFSMode()) << who;
        EXPECT_EQ(0, calls[who + std::string(" among")]) << who;
    }
    EXPECT_FALSE(platform.amongNeighbours);
}

TEST_F(Change, RefreshTypesTellWhatIsReadAgain) {
    disk.Put("C:\\A", "@K/ +p/ { @L/ } private/");
    disk.Put("C:\\R", "@M/");
    const ovDir a = Add("C:\\A"), frozen = Add("C:\\R");
    ovFreeze(frozen);
    Listen();
    const std::string living = "C:\\cwd | C:\\A | C:\\A\\+p | C:\\A\\+p\\@L | C:\\A\\@K | C:\\A\\private";
    EXPECT_EQ("", Refresh(static_cast<ovDirRefreshType>(0)) + Refresh(static_cast<ovDirRefreshType>(9)));
    EXPECT_EQ(living, Refresh(ovRefreshReload));
    EXPECT_EQ(living + " | C:\\R | C:\\R\\@M", Refresh(ovRefreshReloadFrozen));
    EXPECT_TRUE(ovIsFrozen(frozen));
    ovSetDirChanged(a);
    ovSetDirChanged(frozen);
    EXPECT_EQ("C:\\A", Refresh(static_cast<ovDirRefreshType>(9)))
        << "what is known to have changed is read by any type";
    platform.Signal(u"C:\\A\\@K");
    ovRefreshDirectory(a, ovRefreshCheck), ovRefreshDirectory(ovGetNullDir(path), ovRefreshReload);
    EXPECT_EQ("RefreshBegin C:\\A | RefreshEnd C:\\A | RefreshBegin | RefreshEnd", TakeEvents())
        << "one directory alone, or none";
    EXPECT_EQ("C:\\A\\@K", Refresh());
    EXPECT_FALSE(platform.checking);
}

TEST_F(Change, ThatIsDeclaredIsFoundWhereItBelongs) {
    disk.Put("C:\\A", "+p/");
    Add("C:\\A");
    Listen();
    ovDir (*const changed)(ovPath, const ustring&) = &ovSetDirChanged;
    const std::tuple<const char*, ovDir (*)(ovPath, const ustring&), const char*> rows[] = {
        {"C:\\A", changed, "C:\\A -> C:\\A"},
        {"C:\\A\\@New", changed, "C:\\A -> C:\\A"},
        {"C:\\A\\+p\\+q\\@New", changed, "C:\\A\\+p -> C:\\A\\+p"},
        {"C:\\A\\private", changed, "C:\\A -> C:\\A"},
        {"C:\\elsewhere", changed, " (all) -> "}, // every directory becomes a case for a check
        {"C:\\A\\+p", &ovSetDirRemoved, "C:\\A -> C:\\A"},
        {"C:\\elsewhere\\x", &ovSetDirRemoved, " -> "},
        {"C:\\A\\f.sv", &ovSetFullnameChanged, "C:\\A -> C:\\A"},
        {"", &ovSetFullnameChanged, " -> "},
    };
    for (const auto& [what, declare, result] : rows) {
        const std::string marked = N(ovGetDirName(declare(path, U(what))));
        const bool unknown = ovGetCWD(path)->GetState() == DirRecheck;
        EXPECT_EQ(result, marked + (unknown ? " (all)" : "") + " -> " + Refresh()) << what;
    }
    ovSetAllChanged(path);
    EXPECT_EQ("C:\\cwd | C:\\A | C:\\A\\+p", Refresh());
}

TEST_F(Change, ThatAPartyDeclaresDuringARefreshIsReadInItsTurn) {
    Listen();
    Add("C:\\A"), Add("C:\\R");
    Refresh();
    std::string read, declared;
    ovRegisterPathInterest(path, [&](ovEventType event, ovDir dir) {
        if (event == ovEventDirContentsLoaded && N(ovGetDirName(dir)) == read)
            ovSetDirChanged(Find(declared));
    });
    read = "C:\\A", declared = "C:\\R";
    platform.Signal(u"C:\\A");
    EXPECT_EQ("C:\\A | C:\\R", Refresh());
    EXPECT_EQ("", Refresh());
    read = "C:\\R", declared = "C:\\A";
    platform.Signal(u"C:\\R");
    EXPECT_EQ("C:\\R", Refresh()) << "what stands in front has had its turn";
    EXPECT_EQ("C:\\A", Refresh());
}

TEST_F(Change, StaysOutOfAFrozenDirectoryUntilItIsThawed) {
    disk.Put("C:\\A", "@K/ private/");
    const ovDir a = Add("C:\\A");
    Listen();
    EXPECT_FALSE(ovFreeze(a));
    EXPECT_TRUE(ovFreeze(a) && ovIsFrozen(Find("C:\\A\\@K")) && ovIsFrozen(Find("C:\\A\\private")));
    EXPECT_EQ("state 2 policy 5", State(a));
    platform.Signal(u"C:\\A");
    ovSetDirChanged(a);
    EXPECT_EQ("", Refresh());
    EXPECT_TRUE(ovUnFreeze(a));
    EXPECT_EQ("state 3 policy 4 handle", State(a));
    EXPECT_EQ("", Refresh()) << "what changed meanwhile stays unseen";
    EXPECT_EQ("state 1 policy 4 handle", State(a));
    disk.Put("C:\\A", "g.sv");
    ovSetDirChanged(a), ovFreeze(a);
    EXPECT_NE(nullptr, path->FindNameInfo(u"g")) << "a change that is known goes into the freeze";

    for (const ovDir& never : {ovGetCWD(path), ovGetNullDir(path)})
        EXPECT_FALSE(ovFreeze(never) || ovIsFrozen(never));
    EXPECT_FALSE(ovSetFreezeAllAddedDirectories(path, true));
    EXPECT_TRUE(ovIsFrozen(Add("C:\\R")) && ovSetFreezeAllAddedDirectories(path, false));
}

TEST_F(Change, OfDirectoriesIsToldWhenAskedFor) {
    Add("C:\\A");
    EXPECT_FALSE(ovSetDirectoryReloadMessages(path, true));
    Refresh(ovRefreshReload);
    EXPECT_EQ(MessageText('I', "reloadDirCheck", {u"cwd"}) + " | " +
                  MessageText('I', "reloadDirCheck", {u"A"}),
              TakeMessages());
    EXPECT_TRUE(ovSetDirectoryReloadMessages(path, false));
    ChangeDiagnostics() = true;
    Refresh();
    EXPECT_EQ(MessageText('I', "changeNotificationDirCheck", {u"WAIT_TIMEOUT", u"cwd"}) + " | " +
                  MessageText('I', "changeNotificationDirCheck", {u"WAIT_TIMEOUT", u"A"}),
              TakeMessages());
}

TEST_F(Change, OfAFileIsToldByItsStamp) {
    const char* const f = "C:\\A\\f.sv";
    const ovDir a = Add("C:\\A");
    long& time = disk.times[f] = 100;
    ovTimeStamp_tag* stamp = ovCreateTimeStamp();
    const auto text = [&] {
        return std::to_string(static_cast<std::int32_t>(stamp->m_fileTime)) + "/" +
               std::to_string(stamp->m_dirTick);
    };
    const auto changed = [&](ovTimeStampUpdate update, bool useDirTick) {
        disk.timeQueries = 0;
        const bool result = ovHasFileChanged(a, f, stamp, update, useDirTick);
        return std::string(result ? "changed " : "same ") + text() + " by " +
               std::to_string(disk.timeQueries);
    };
    EXPECT_EQ("-1/0", text());
    EXPECT_EQ("changed 100/1 by 1", changed(ovUpdateTimeStamp, true));
    time = 200;
    EXPECT_EQ("same 100/1 by 0", changed(ovUpdateTimeStamp, true)) << "the directory is not seen to change";
    EXPECT_EQ("changed 100/1 by 1", changed(ovKeepTimeStamp, false));
    platform.Signal(u"C:\\A");
    ovRefreshDirectory(a, ovRefreshCheck);
    EXPECT_EQ("changed 100/1 by 1", changed(ovKeepTimeStamp, true));
    EXPECT_EQ("changed 200/2 by 1", changed(ovUpdateTimeStamp, true));
    ovSetDirChanged(a);
    ovRefreshDirectory(a, ovRefreshCheck);
    EXPECT_EQ("same 200/3 by 1", changed(ovKeepTimeStamp, true)) << "takes over the tick in any mode";
    time = 0;
    EXPECT_EQ("changed 0/3 by 1", changed(ovUpdateTimeStamp, false)) << "gone";

    EXPECT_TRUE(ovGetTimeStampFromDir(a, f, stamp));
    EXPECT_EQ("-1/0", text());
    time = 300;
    ovGetTimeStampFromDir(a, U(f), stamp);
    EXPECT_EQ("300/3", text());
    ovTimeStamp_tag other{};
    EXPECT_TRUE(ovIsFileTimeStampDifferent(stamp, &other));
    ovCopyTimeStamp(&other, stamp);
    EXPECT_FALSE(ovIsFileTimeStampDifferent(stamp, &other));
    for (const ovDir& none : {ovGetNullDir(path), ovDir()})
        EXPECT_FALSE(ovGetTimeStampFromDir(none, f, stamp));
    ovFreeze(a);
    time = 400;
    EXPECT_EQ("same 300/3 by 0", changed(ovUpdateTimeStamp, false)) << "nothing frozen changes";
    EXPECT_TRUE(ovGetTimeStampFromDir(a, f, stamp));
    EXPECT_EQ("-1/0", text());
    ovDestroyTimeStamp(stamp);

    // When the directory has been replaced it is found through the file's name.
    ovUnFreeze(a), ovRemoveDir(a);
    ovTimeStamp_tag old{50, 7};
    EXPECT_FALSE(ovHasFileChanged(a, f, &old, ovUpdateTimeStamp, true)) << "none of it is known";
    EXPECT_EQ(0u, old.m_dirTick);
    Add("C:\\A");
    EXPECT_TRUE(ovHasFileChanged(a, f, &old, ovUpdateTimeStamp, true));
    EXPECT_EQ(400u, old.m_fileTime);
    ovRemovePath(path);
    EXPECT_FALSE(ovHasFileChanged(a, f, &old, ovUpdateTimeStamp, true)) << "no path";
}

} // namespace
