#include "support/path_fixture.hpp"

#include "ovsel/reading/changediagnostics.hpp"

namespace {

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

    /// The identifiers of the messages since the last call, each with its hook's letter.
    std::string TakeIds() {
        static const char* const ids[] = {
            "couldNotGetHandleLocalChangeNotification", "noSupportRemoteChangeNotification",
            "ranOutOfHandlesRemoteChangeNotification", "nonResponsiveRemoteChangeNotification"};
        std::vector<std::string> found;
        for (const std::string& message : Messages())
            for (const char* id : ids)
                for (const char* dir : {"C:\\A", "C:\\R", "C:\\cwd", "R:\\A", "R:\\B", "R:\\C"})
                    if (message == MessageText('W', id, {U(dir)}))
                        found.push_back(std::string(id).substr(0, 8) + " " + dir);
        EXPECT_EQ(found.size(), Messages().size());
        Messages().clear();
        return Join(found);
    }
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

TEST_F(Change, IsNotifiedWhereAHandleIsToBeHad) {
    Listen();
    const ovDir dir = Add("C:\\A");
    EXPECT_EQ("state 1 policy 4 handle", State(dir));
    EXPECT_EQ("", Refresh());
    platform.Signal(u"C:\\A");
    EXPECT_EQ("C:\\A", Refresh());
    EXPECT_EQ("", Refresh()) << "armed again";
    platform.Break(u"C:\\A");
    EXPECT_EQ("C:\\A", Refresh()) << "a broken local handle counts as a change";
    EXPECT_EQ("C:\\A", Refresh()) << "each time";
    EXPECT_EQ(2, path->GetNotifiedDirCount());
    ovRemoveDir(dir);
    EXPECT_EQ(1, path->GetNotifiedDirCount());
    path = ovPath();
    EXPECT_TRUE(platform.handles.empty()) << "all are given back";
}

TEST_F(Change, WithoutAHandleGoesByPolicyAndIsWarnedOfAsRationed) {
    platform.handlesRefused = true;
    const std::tuple<const char*, ovWarnInvalidCNH, const char*, const char*> rows[] = {
        {"C:\\A", ovWarnCNHOnce, "state 1 policy 0", "couldNot C:\\A"},
        {"C:\\R", ovWarnCNHOnce, "state 1 policy 0", "couldNot C:\\R"}, // local ones are not counted
        {"R:\\A", ovWarnCNHNever, "state 1 policy 5", ""},
        {"R:\\B", ovWarnCNHOnce, "state 1 policy 5", "noSuppor R:\\B"},
        {"R:\\C", ovWarnCNHOnce, "state 1 policy 5", ""}, // one for the file system
        {"R:\\C", ovWarnCNHAlways, "state 1 policy 5", "noSuppor R:\\C"},
    };
    for (const auto& [name, mode, state, warnings] : rows) {
        ovSetNotificationHandleWarnings(path, mode);
        ovRemoveDir(Find(name));
        EXPECT_EQ(state, State(Add(name))) << name;
        EXPECT_EQ(warnings, TakeIds()) << name;
    }
    EXPECT_EQ(ovRefreshByTimeStamp, ovNonNotifiedRemoteCWDRefreshPolicy(path, ovRefreshNotified));
    ASSERT_EQ(nullptr, ovSetCWDName(path, u"R:\\A"));
    EXPECT_EQ("state 1 policy 2", State(ovGetCWD(path)));
}

TEST_F(Change, OnARemoteDriveIsProbedOnce) {
    disk.Put("R:\\A", "@K/ private/");
    Add("R:\\A");
    EXPECT_EQ("R:\\A\\@K\\$sorven_temp_file$1267", N(platform.probeFiles.at(0)))
        << "the first one to be watched";
    EXPECT_EQ(1u, platform.probeFiles.size());
    EXPECT_EQ("", TakeIds());
    EXPECT_EQ("", Refresh()) << "the probe's own event is no change";

    ovPath other = NewPath("other");
    platform.probeFilesNotified = false;
    ovAddDir(other, "R:\\B", ovDirAddAtEnd);
    EXPECT_EQ("nonRespo R:\\B", TakeIds());
    EXPECT_TRUE(ovFindDirFullName(other, "R:\\B")->HasNotificationHandle()) << "it is kept all the same";
    ovAddDir(other, "R:\\C", ovDirAddAtEnd);
    EXPECT_EQ(2u, platform.probeFiles.size());

    ovPath readOnly = NewPath("read-only");
    platform.probeFilesRefused = true;
    ovAddDir(readOnly, "R:\\B", ovDirAddAtEnd), ovAddDir(readOnly, "R:\\C", ovDirAddAtEnd);
    EXPECT_EQ("", TakeIds())
        << "a probe that could not be done is tried at the next directory, without a word";

    ovPath disabled = ovCreatePathWithPreFrozen(0, "disabled", static_cast<const char16_t*>(nullptr),
                                                ovCaseSensitive, true);
    platform.handlesRefused = true;
    const int written = platform.calls["WriteProbeFile"];
    ovAddDir(disabled, "R:\\B", ovDirAddAtEnd);
    EXPECT_EQ("", TakeIds()) << "no probe, and the ration is used up";
    EXPECT_EQ(written, platform.calls["WriteProbeFile"]);
}

TEST_F(Change, RunningOutOfHandlesIsNews) {
    ovSetNotificationHandleWarnings(path, ovWarnCNHOnce);
    platform.probeFilesNotified = false;
    Add("R:\\A");
    EXPECT_EQ("nonRespo R:\\A", TakeIds()) << "the ration is used up";
    platform.handlesRefused = true;
    Add("R:\\B"), Add("R:\\C");
    EXPECT_EQ("ranOutOf R:\\B", TakeIds())
        << "the first refusal behind a success may warn afresh, the second not";
}

TEST_F(Change, OfAPolicyReachesRemoteDirectoriesWithoutHandlesOnly) {
    disk.Put("R:\\A", "@K/ private/");
    ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
    platform.refusesAt = [](const ustring& name) { return name != u"R:\\B"; };
    const ovDir a = Add("R:\\A"), b = Add("R:\\B"), local = Add("C:\\A");
    ASSERT_EQ(nullptr, ovSetCWDName(path, u"R:\\C"));
    disk.times["R:\\A"] = 5;
    EXPECT_EQ(ovRefreshNever, ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp));
    EXPECT_EQ(ovRefreshByTimeStamp, ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshNotified))
        << "only asks";
    EXPECT_EQ("state 1 policy 2", State(a));
    EXPECT_EQ(1u, a->GetChangeTick());
    EXPECT_EQ("state 1 policy 2", State(Find("R:\\A\\@K")));
    EXPECT_EQ("state 1 policy 2", State(Find("R:\\A\\private")));
    EXPECT_EQ("state 1 policy 4 handle", State(b));
    EXPECT_EQ("state 1 policy 0", State(local));
    ovNonNotifiedRemoteCWDRefreshPolicy(path, ovRefreshByTimeStampQuiet);
    EXPECT_EQ("state 1 policy 1", State(ovGetCWD(path)));
    ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshNever);
    EXPECT_EQ("state 1 policy 1", State(ovGetCWD(path))) << "the current directory has a policy of its own";
}

/// A directory that is watched by its time, as a story of the clock and the disk.
class ByTime : public Change {
  protected:
    ByTime() {
        ovSetNotificationHandleWarnings(path, ovWarnCNHNever);
        ovNonNotifiedRemotePathRefreshPolicy(path, ovRefreshByTimeStamp);
        platform.handlesRefused = true;
        Listen();
    }
    void Touch(long time, const char* contents = "f.sv") {
        disk.times["R:\\A"] = time;
        disk.Put("R:\\A", contents);
    }
    std::string Look(std::int64_t now) {
        platform.now = now;
        ovRefreshDirectory(Find("R:\\A"), ovRefreshCheck);
        std::string read = TakeEvents().find("Loaded") == std::string::npos ? "quiet" : "read";
        return read + " " + std::to_string(Find("R:\\A")->GetState());
    }
};

TEST_F(ByTime, NoChangeIsMissedWithinASecond) {
    Touch(1000), platform.now = 1000;
    Add("R:\\A");
    Touch(1000, "f.sv g.sv"); // in the second of the first look, and the time does not move
    EXPECT_EQ("read 1", Look(1000));
    EXPECT_NE(nullptr, path->FindNameInfo(u"g"));
    EXPECT_EQ("read 1", Look(1000)) << "more may come";
    EXPECT_EQ("read 1", Look(1001));
    EXPECT_EQ("read 1", Look(1002)) << "old enough to be believed, and taken over";
    EXPECT_EQ("quiet 1", Look(1002));
    Touch(1002, "h.sv");
    EXPECT_EQ("read 1", Look(1002));
    EXPECT_EQ("read 1", Look(1005));
    EXPECT_EQ("quiet 1", Look(1005));
}

TEST_F(ByTime, ATimeAheadOfTheClockIsReadOnceMoreAndStandsStill) {
    Touch(5000), platform.now = 1000;
    Add("R:\\A");
    EXPECT_EQ("read 1", Look(1000));
    EXPECT_EQ("quiet 1", Look(1001));
    EXPECT_EQ("quiet 1", Look(900)) << "the clock was set back";
    Touch(10);
    EXPECT_EQ("read 1", Look(1002)) << "a time set back is a change";
    EXPECT_EQ("quiet 1", Look(1003));
}

TEST_F(ByTime, ADirectoryThatIsGoneIsReadEachTime) {
    Touch(10), platform.now = 1000;
    Add("R:\\A");
    EXPECT_EQ("quiet 1", Look(1000));
    disk.times.erase("R:\\A");
    EXPECT_EQ("read 1", Look(1000));
    EXPECT_EQ("read 1", Look(1001));
    Touch(10);
    EXPECT_EQ("quiet 1", Look(1002)) << "the reference has stayed";
}

TEST_F(ByTime, ComparisonsAreToldWhenTheSwitchIsOn) {
    Touch(10), platform.now = 1000;
    Add("R:\\A");
    ChangeDiagnostics() = true;
    TakeMessages();
    Look(1000);
    const ustring text = fl::i18n::message_text({"SORVEN:ovsel", "noChangeTimestampDiagnostic", {}},
                                                fl::i18n::Locale::global());
    EXPECT_EQ(MessageText('I', "timestampDiagnostic", {text, u"10", u"10", u"R:\\A"}), TakeMessages());
}

TEST_F(Change, RefreshTypesTellWhatIsReadAgain) {
    disk.Put("C:\\A", "@K/ +p/ private/");
    disk.Put("C:\\A\\+p", "@L/");
    const ovDir a = Add("C:\\A");
    disk.Put("C:\\R", "@M/");
    const ovDir frozen = Add("C:\\R");
    ovFreeze(frozen);
    Listen();
    const std::string living = "C:\\cwd | C:\\A | C:\\A\\+p | C:\\A\\+p\\@L | C:\\A\\@K | C:\\A\\private";
    EXPECT_EQ("", Refresh(static_cast<ovDirRefreshType>(0)));
    EXPECT_EQ(living, Refresh(ovRefreshReload));
    EXPECT_EQ(living + " | C:\\R | C:\\R\\@M", Refresh(ovRefreshReloadFrozen));
    EXPECT_TRUE(ovIsFrozen(frozen));
    EXPECT_EQ("", Refresh(static_cast<ovDirRefreshType>(9)));
    ovSetDirChanged(a);
    ovSetDirChanged(frozen);
    EXPECT_EQ("C:\\A", Refresh(static_cast<ovDirRefreshType>(9)))
        << "what is known to have changed is read by any type";
    platform.Signal(u"C:\\A\\@K");
    ovRefreshDirectory(a, ovRefreshCheck);
    EXPECT_EQ("RefreshBegin C:\\A | RefreshEnd C:\\A", TakeEvents()) << "one directory alone";
    EXPECT_EQ("C:\\A\\@K", Refresh());
    ovRefreshDirectory(ovGetNullDir(path), ovRefreshReload);
    EXPECT_EQ("RefreshBegin | RefreshEnd", TakeEvents());
    EXPECT_FALSE(platform.checking);
}

TEST_F(Change, ThatIsDeclaredIsFoundWhereItBelongs) {
    disk.Put("C:\\A", "+p/");
    Add("C:\\A");
    Listen();
    const auto declare = [&](const char* what, ovDir (*how)(ovPath, const ustring&)) {
        const std::string marked = N(ovGetDirName(how(path, U(what))));
        const bool unknown = ovGetCWD(path)->GetState() == DirRecheck;
        return marked + (unknown ? " (all)" : "") + " -> " + Refresh();
    };
    ovDir (*const changed)(ovPath, const ustring&) = &ovSetDirChanged;
    EXPECT_EQ("C:\\A -> C:\\A", declare("C:\\A", changed));
    EXPECT_EQ("C:\\A -> C:\\A", declare("C:\\A\\@New", changed));
    EXPECT_EQ("C:\\A\\+p -> C:\\A\\+p", declare("C:\\A\\+p\\+q\\@New", changed));
    EXPECT_EQ("C:\\A -> C:\\A", declare("C:\\A\\private", changed));
    EXPECT_EQ(" (all) -> ", declare("C:\\elsewhere", changed))
        << "every directory becomes a case for a check";
    EXPECT_EQ("C:\\A -> C:\\A", declare("C:\\A\\+p", &ovSetDirRemoved));
    EXPECT_EQ(" -> ", declare("C:\\elsewhere\\x", &ovSetDirRemoved));
    EXPECT_EQ("C:\\A -> C:\\A", declare("C:\\A\\f.sv", &ovSetFullnameChanged));
    EXPECT_EQ(" -> ", declare("", &ovSetFullnameChanged));
    ovSetAllChanged(path);
    EXPECT_EQ("C:\\cwd | C:\\A | C:\\A\\+p", Refresh());
}

TEST_F(Change, StaysOutOfAFrozenDirectoryUntilItIsThawed) {
    disk.Put("C:\\A", "@K/ private/");
    const ovDir a = Add("C:\\A"), k = Find("C:\\A\\@K");
    Listen();
    EXPECT_FALSE(ovFreeze(a));
    EXPECT_TRUE(ovFreeze(a));
    EXPECT_TRUE(ovIsFrozen(k));
    EXPECT_TRUE(ovIsFrozen(Find("C:\\A\\private")));
    EXPECT_EQ("state 2 policy 5", State(a));
    disk.Put("C:\\A", "g.sv @K/");
    platform.Signal(u"C:\\A");
    ovSetDirChanged(a);
    EXPECT_EQ("", Refresh());
    EXPECT_TRUE(ovUnFreeze(a));
    EXPECT_EQ("state 3 policy 4 handle", State(a));
    EXPECT_EQ(1u, a->GetChangeTick());
    EXPECT_EQ("", Refresh()) << "what changed meanwhile stays unseen";
    EXPECT_EQ("state 1 policy 4 handle", State(a));
    ovSetDirChanged(a);
    ovFreeze(a);
    EXPECT_NE(nullptr, path->FindNameInfo(u"g")) << "a change that is known goes into the freeze";
    CheckIndex();

    EXPECT_FALSE(ovFreeze(ovGetCWD(path)));
    EXPECT_FALSE(ovIsFrozen(ovGetCWD(path))) << "the current directory cannot be frozen";
    EXPECT_FALSE(ovFreeze(ovGetNullDir(path)));
    EXPECT_FALSE(ovSetFreezeAllAddedDirectories(path, true));
    EXPECT_TRUE(ovIsFrozen(Add("C:\\R")));
    EXPECT_TRUE(ovSetFreezeAllAddedDirectories(path, false));
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
    const ovDir a = Add("C:\\A");
    disk.times["C:\\A\\f.sv"] = 100;
    ovTimeStamp_tag* stamp = ovCreateTimeStamp();
    const auto text = [&] {
        return std::to_string(static_cast<std::int32_t>(stamp->m_fileTime)) + "/" +
               std::to_string(stamp->m_dirTick);
    };
    const auto changed = [&](ovTimeStampUpdate update, bool useDirTick) {
        disk.timeQueries = 0;
        const bool result = ovHasFileChanged(a, "C:\\A\\f.sv", stamp, update, useDirTick);
        return std::string(result ? "changed " : "same ") + text() + " by " +
               std::to_string(disk.timeQueries);
    };
    EXPECT_EQ("-1/0", text());
    EXPECT_EQ("changed 100/1 by 1", changed(ovUpdateTimeStamp, true));
    EXPECT_EQ("same 100/1 by 0", changed(ovUpdateTimeStamp, true)) << "two integers";
    disk.times["C:\\A\\f.sv"] = 200;
    EXPECT_EQ("same 100/1 by 0", changed(ovUpdateTimeStamp, true))
        << "the directory has not been seen to change";
    EXPECT_EQ("changed 100/1 by 1", changed(ovKeepTimeStamp, false));
    platform.Signal(u"C:\\A");
    ovRefreshDirectory(a, ovRefreshCheck);
    EXPECT_EQ("changed 100/1 by 1", changed(ovKeepTimeStamp, true));
    EXPECT_EQ("changed 200/2 by 1", changed(ovUpdateTimeStamp, true));
    ovSetDirChanged(a);
    ovRefreshDirectory(a, ovRefreshCheck);
    EXPECT_EQ("same 200/3 by 1", changed(ovKeepTimeStamp, true))
        << "an unchanged file takes over the tick in any mode";
    disk.times.clear();
    EXPECT_EQ("changed 0/3 by 1", changed(ovUpdateTimeStamp, false)) << "gone";

    EXPECT_TRUE(ovGetTimeStampFromDir(a, "C:\\A\\f.sv", stamp));
    EXPECT_EQ("-1/0", text());
    disk.times["C:\\A\\f.sv"] = 300;
    ovGetTimeStampFromDir(a, u"C:\\A\\f.sv", stamp);
    EXPECT_EQ("300/3", text());
    EXPECT_FALSE(ovGetTimeStampFromDir(ovGetNullDir(path), "C:\\A\\f.sv", stamp));
    EXPECT_FALSE(ovGetTimeStampFromDir(ovDir(), "C:\\A\\f.sv", stamp));
    ovFreeze(a);
    disk.times["C:\\A\\f.sv"] = 400;
    EXPECT_EQ("same 300/3 by 0", changed(ovUpdateTimeStamp, false))
        << "nothing under a frozen directory changes";
    EXPECT_TRUE(ovGetTimeStampFromDir(a, "C:\\A\\f.sv", stamp));
    EXPECT_EQ("-1/0", text());

    ovRemoveDir(a);
    ovUnFreeze(Add("C:\\A"));
    ovTimeStamp_tag other{};
    EXPECT_TRUE(ovIsFileTimeStampDifferent(stamp, &other));
    ovCopyTimeStamp(&other, stamp);
    EXPECT_FALSE(ovIsFileTimeStampDifferent(stamp, &other));
    ovDestroyTimeStamp(stamp);
    EXPECT_EQ(0xFFFFFFFF, other.m_fileTime);
}

TEST_F(Change, OfAFileIsFoundThroughItsNameWhenTheDirectoryWasReplaced) {
    ovDir old = Add("C:\\A");
    disk.times["C:\\A\\f.sv"] = 100;
    ovTimeStamp_tag stamp{50, 7};
    ovRemoveDir(old);
    EXPECT_FALSE(ovHasFileChanged(old, "C:\\A\\f.sv", &stamp, ovUpdateTimeStamp, true))
        << "no directory of it is known";
    EXPECT_EQ(0u, stamp.m_dirTick);
    Add("C:\\A");
    EXPECT_TRUE(ovHasFileChanged(old, "C:\\A\\f.sv", &stamp, ovUpdateTimeStamp, true));
    EXPECT_EQ(100u, stamp.m_fileTime);
}

TEST_F(Change, OfAFullFolderIsReadAgainInOrder) {
    std::string entries;
    for (int i = 0; i < 3000; ++i)
        entries += "f" + std::to_string(i * 7919 % 3000) + (i % 2 ? ".sv " : ".p ");
    disk.Put("C:\\A", entries);
    const ovDir a = Add("C:\\A");
    const std::vector<PathFileItemInfo*> before = a->GetFiles();
    disk.Put("C:\\A", "new.sv " + entries + "f1.extra f1.extra");
    ovSetDirChanged(a);
    Listen();
    EXPECT_EQ("C:\\A", Refresh());
    ASSERT_EQ(before.size() + 2, a->GetFiles().size()) << "the one listed twice is one";
    EXPECT_TRUE(std::equal(before.begin(), before.end(), a->GetFiles().begin()))
        << "the same records in the same order";
}

} // namespace
