#include <sstream>

#include <ovsel/ovsel.hpp>

#include "faults/faults.hpp"
#include "host_interfaces/filesystem.hpp"
#include "linux_host/linux_host.hpp"
#include "ovsel/reading/changediagnostics.hpp"
#include "support/invariants.hpp"
#include "support/temp_tree.hpp"
#include "support/texts.hpp"

namespace faults {

namespace {

// Some names are too long for a string to hold them without memory. `L:` is local, `R:` remote.
const std::string longName = std::string(80, 'l') + ".extension", inF = "L/" + std::string(80, 'f') + "/";
const ustring cwd = u"L:\\cwd", other = u"L:\\other", dirA = u"L:\\A", dirB = u"R:\\B",
              dirF = u"L:\\" + ustring(80, u'f'), dirSig = u"L:\\tool\\\u00e9",
              wantedPath = u"R:\\B;L:\\A;" + dirSig + u";" + dirF;
const ustring names[] = {u"plot",       u"draw",      u"K",       u"note",  u"sub",     u"pkg\\plot",
                         u"K\\draw.sv", u"pkg\\K\\K", u"tone.sv", u"extra", u"missing", u""};
const char* const classNames[] = {"K", "plot", "pkg.K", "pkg.in.draw"};
const Extensions extensions{"p", "sv"};

class Scenario {
  public:
    Scenario() {
        using Kind = linux_host::DriveMap::Kind;
        linux_host::DriveMap::Add(u"L:", m_tree.Path("L"), Kind::Fixed);
        linux_host::DriveMap::Add(u"R:", m_tree.Path("R"), Kind::Remote);
        ChangeDiagnostics() = state.plan.operation == "hook: message";
        ChangeDisk("L/home/ L/cwd/draw.sv L/cwd/plot.sv L/cwd/@plot/plot.sv L/cwd/@plot/draw.p "
                   "L/cwd/private/plot.sv L/other/plot.sv L/other/K.p L/other/@K/K.sv L/A/plot.sv L/A/plot.p "
                   "L/A/K.sv L/A/data/ L/A/@K/K.sv L/A/@K/draw.sv L/A/@K/private/draw.sv L/A/+pkg/plot.sv "
                   "L/A/+pkg/@K/K.sv L/A/+pkg/+in/draw.sv L/A/private/draw.sv R/B/plot.sv R/B/extra.sv "
                   "L/A/+pkg/private/draw.sv L/A/+pkg/+in/@K/K.sv "
                   "R/B/@K/K.sv R/B/@K/K.p L/tool/\u00e9/tone.sv L/tool/\u00e9/K.sv "
                   "L/tool/\u00e9/+wave/plot.sv L/A/@K/" +
                   longName + " " + inF + "plot.sv");
        m_tree.Add({"L/A/note -> nowhere", "L/A/sub -> ../../R"});
    }
    ~Scenario() { fl::filesystem::current_path(m_start); }

    Outcome Play() {
        Create(), LookAround();
        Change(), LookAround();
        Rearrange(), LookAround();
        UseCache(), Heal();
        CheckIndex("at the end");
        m_isOver = true;
        std::string answers = LookAround();
        m_isOver = false;
        Do([&] { m_kept = ovDir(); });
        Do([&] { ovTerminate(); });
        ovTerminate();
        return {std::move(answers), std::move(m_wrong)};
    }

  private:
    /// One thing that the host does; what is thrown is caught, and life goes on.
    template <class Step>
    void Do(Step step) {
        const bool hadFired = state.fired;
        state.armed = !m_isOver;
        try {
            step();
            state.armed = false;
        } catch (const std::exception& e) {
            state.armed = false;
            if (!state.fired)
                m_wrong += std::string("thrown without a fault: ") + e.what() + "\n";
        }
        if (!hadFired && state.fired)
            CheckIndex("behind the fault");
    }
    void CheckIndex(const std::string& when) {
        std::size_t notified = m_foreign;
        for (const ovPath& path : {m_owner, m_path})
            if (path != nullptr && path->IsValid()) {
                if (const std::string found = InvariantCheck(path).Run(); !found.empty())
                    m_wrong += when + ": " + found;
                notified += static_cast<std::size_t>(path->GetNotifiedDirCount());
            }
        if (linux_host::GetCounters().handles != notified)
            m_wrong += when + ": not each handle has its record\n";
        if (m_begun != 0)
            m_wrong += when + ": an end was not told\n";
    }

    /// Adds entries, and removes those that have a minus in front.
    void ChangeDisk(const std::string& entries) {
        std::istringstream words(entries);
        for (std::string word; words >> word;)
            word[0] == '-' ? m_tree.Remove(word.substr(1)) : m_tree.Add({word});
    }
    void Refresh(ovDirRefreshType type) {
        Do([&] { ovRefreshAllDirectories(m_path, type); });
    }
    ovDir Find(const ustring& name) { return ovFindDirFullName(m_path, name); }

    void Create() {
        const auto owner = [&] { m_owner = ovCreatePath(0, "owner"); };
        const auto path = [&] {
            m_path = ovCreatePathWithPreFrozen(0, "main", u"L:\\tool", ovCaseSensitive, false);
        };
        Do(owner), m_owner == nullptr ? owner() : void();
        Do(path), m_path == nullptr ? path() : void();
        const auto told = [this](ovEventType event, ovDir) { Told(event); };
        Do([&] { m_interest = ovRegisterPathInterest(m_path, told); });
        ovSetNotificationHandleWarnings(m_path, ovWarnCNHAlways);
        ovSetDirectoryReloadMessages(m_path, true);
        Do([&] { ovNonNotifiedRemotePathRefreshPolicy(m_path, ovRefreshByTimeStamp); });
        Do([&] { ovSetCWDName(m_owner, u"L:\\home"); });
        Do([&] { ovSetCWDName(m_path, cwd); });
        Do([&] { m_kept = ovAddDir(m_path, dirA, ovDirAddAtEnd); });
        Do([&] { ovAddDir(m_path, dirB, ovDirAddAtBegin); });
        Do([&] { ovAddDir(m_path, N(dirSig).c_str(), ovDirAddAtEnd); });
        Do([&] { ovAddDir(m_path, u"no\\where", ovDirAddAtEnd); });
    }

    /// Whoever is told may ask.
    void Told(ovEventType event) {
        m_begun += event >= ovEventPathReplaceBegin && event <= ovEventRefreshBegin ? 1 : 0;
        m_begun -= event >= ovEventPathReplaceEnd && event <= ovEventRefreshEnd ? 1 : 0;
        Fails("hook: interest", Throws);
        ustring name;
        ovFindFirstFileInAll(m_path, names[0], nullptr, nullptr, name);
    }

    /// One name in each scope: `use` gets what is found.
    template <class Use>
    void Question(const ustring& name, Use use) {
        const auto walk = [&](ovSearch* created, int (*find)(ovSearch*, ovDir*, ustring&) = &ovFindNextFile) {
            const Search search(created);
            ustring found;
            for (int match; (match = find(search.Get(), nullptr, found)) != 0;)
                use(match, found);
            use(0, found);
        };
        walk(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath));
        walk(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath), &ovFindNextUnspecified);
        walk(ovCreatePathOnlySearchIterator(m_path, name, extensions, ovCaseInsensitive));
        walk(ovCreateMethodSearchIterator(m_path, name, nullptr, ovCaseOfPath));
        walk(ovCreateDirSearchIterator(Find(dirA), name, nullptr, ovCaseOfPath));
        walk(ovCreatePrivateSearchIterator(Find(dirA), name, nullptr, ovCaseOfPath));
        walk(ovCreateDirnameVisibleSearchIterator(m_path, dirA, name, nullptr, ovCaseOfPath));
        const Search dirs(ovCreateAllSearchIterator(m_path, name, nullptr, ovCaseOfPath));
        for (ovDir dir; ovFindNextDir(dirs.Get(), &dir);)
            use(0, ovGetDirName(dir));
    }

    /// @return the answers, once the faults are over. Which of a directory's files comes first depends on
    /// what was read when; so does a walk over all.
    std::string LookAround() {
        std::string text = PathText(m_path);
        for (const ustring& name : names) {
            std::vector<std::string> found;
            Do([&] {
                Question(name, [&](int match, const ustring& file) {
                    if (m_isOver)
                        found.push_back(std::to_string(match) + " " + N(file));
                });
                ustring first;
                ovFindFirstFileVisibleToFile(m_path, dirB + u"\\@K\\K.sv", name, extensions, nullptr, first);
            });
            if (name.empty())
                std::sort(found.begin(), found.end());
            text += "\n" + N(name) + ": " + Join(found);
        }
        for (const char* name : classNames) {
            char buffer[300] = {};
            Do([&] {
                ovFindFirstFileInAll(m_path, name, nullptr, nullptr, buffer);
                ovGetClassFile(m_path, name, buffer, sizeof(buffer), extensions);
            });
            text += std::string("\nclass ") + name + ": " + buffer;
        }
        Do([&] {
            ovTimeStamp_tag stamp{};
            ovGetTimeStampFromDir(Find(dirA), "L:\\A\\plot.sv", &stamp);
            ovHasFileChanged(Find(dirA), "L:\\A\\plot.sv", &stamp, ovUpdateTimeStamp, true);
        });
        return text;
    }

    /// The disk changes, and the host wants to know of it in each of the ways there are.
    void Change() {
        ChangeDisk("-L/A/sub -L/A/private -L/A/data L/A/new.sv L/A/@New/New.sv L/A/@New/private/ "
                   "-L/A/@K/private -L/A/@K/" +
                   longName);
        Refresh(ovRefreshCheck);
        ChangeDisk("-R/B/extra.sv R/B/+late/plot.sv R/B/+late/K.sv -L/A/+pkg/+in L/A/+pkg/K.sv");
        Refresh(ovRefreshReload);
        Do([&] { ovAddDir(m_path, dirF, ovDirAddAtEnd); });
        Do([&] { ovFreeze(Find(dirF)); });
        ChangeDisk(inF + "frozen.sv " + inF + "@K/K.sv");
        Do([&] { ovRefreshDirectory(Find(dirF), ovRefreshReloadFrozen); });
        Do([&] { ovUnFreeze(Find(dirF)); });
        ChangeDisk("-" + inF + "plot.sv -" + inF + "frozen.sv " + inF + "thawed.sv " + inF +
                   "plot.p -L/cwd/plot.sv -L/cwd/@plot L/cwd/plot.p");
        Do([&] { ovSetDirChanged(m_path, "L:\\A\\@Newer"); });
        Do([&] { ovSetFullnameChanged(m_path, u"L:\\elsewhere\\plot.sv"); });
        Do([&] { ovSetDirChanged(Find(dirB)); });
        Do([&] { ovFreeze(Find(dirB)); });
        Do([&] { ovUnFreeze(Find(dirB)); });
        Refresh(ovRefreshCheck);
    }

    void Rearrange() {
        Do([&] { ovReplacePath(m_path, dirF + u";L:\\A;L:\\nowhere;L:\\other;" + dirSig); });
        Do([&] { ovRemoveDir(Find(other)); });
        Do([&] { ovHideCWD(m_path, true); });
        Refresh(ovRefreshReload);
        Do([&] { ovHideCWD(m_path, false); });
        Do([&] { ovDeleteNonExistentDirectories(m_path); });
        Do([&] { ovSetCWDName(m_path, other); });
    }

    void UseCache() {
        Do([&] { ovWritePathToCacheFile(m_path, "L:\\home\\cache.xml"); });
        Do([&] { ovRemoveDir(Find(dirSig)); });
        for (int i = 0; i < 2; ++i)
            Do([&] { ovUseToolboxCache(m_path, u"L:\\home\\cache.xml", u"L:\\tool", true); });
        Do([&] { ovAddDir(m_path, dirSig, ovDirAddAtEnd); });
        Do([&] { ovRefreshDirectory(Find(dirSig), ovRefreshReloadFrozen); });
        LookAround();
        Do([&] { ovRevertFromToolboxCache(m_path); });
        ChangeDisk("-L/A/plot.p -L/A/note -L/A/@K -L/A/new.sv L/A/private/plot.sv L/A/last.sv "
                   "-L/other/plot.sv -L/other/@K L/other/plot.p");
        Refresh(ovRefreshCheck);
        ChangeDisk("L/other/@K/K.sv"); // what has been read late has to be watched like the rest
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
        if (Without(" ", PathText(m_path)) != N(u"L:\\other;" + wantedPath))
            ovReplacePath(m_path, wantedPath);
        for (const ustring& thawed : {dirB, dirF})
            if (ovIsFrozen(Find(thawed))) {
                ovUnFreeze(Find(thawed));
                ovRefreshDirectory(Find(thawed), ovRefreshReload);
            }
        ovRefreshAllDirectories(m_path, state.plan.way == Throws ? ovRefreshCheck : ovRefreshReloadFrozen);
    }

    test::TempTree m_tree = test::TempTree::InMemory();
    const ustring m_start = fl::filesystem::current_path();
    const std::size_t m_foreign = linux_host::GetCounters().handles;
    ovPath m_owner, m_path;
    ovRegisteredInterest m_interest;
    ovDir m_kept;
    bool m_isOver = false;
    int m_begun = 0; ///< of what begins and ends, and has not ended
    std::string m_wrong;
};

} // namespace

Outcome PlayScenario() { return Scenario().Play(); }

} // namespace faults
