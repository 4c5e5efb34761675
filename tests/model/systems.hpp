#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <ovsel/ovsel.hpp>

#include "model/world.hpp"

namespace model {

/// How the library is to learn of changes.
enum class Detection { Handles, Times, Mixed };

/// On what disk, and how the library learns of changes there.
struct SystemKind {
    bool isReal;
    Detection detection;
};

std::vector<SystemKind> SystemKinds();
std::string NameOf(const SystemKind& kind);
/// The world as such a system shows it at its start.
World MakeWorld(const SystemKind& kind);
inline std::ostream& operator<<(std::ostream& stream, const SystemKind& kind) {
    return stream << NameOf(kind);
}

/// The library on a disk that does what the world says.
class System {
  public:
    /// An operation, and the worlds that it leads from and to.
    struct Step {
        const Operation& operation;
        const World &before, &after;
    };
    enum class By { Host, Callbacks, CallbacksThatFreeze }; ///< who does it, the host always
    struct Command {
        const char* name;
        std::size_t weight; ///< how often the host does it
        By by;
        std::function<void(World&, const Operation&)> foresee;
        std::function<void(System&, const Step&)> perform;
    };
    /// In the order in which fuzzed inputs name them.
    static const std::vector<Command> Commands;

    virtual ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    /// Does to the library, and to the disk beneath it, what led from one world to the other.
    void Apply(const Step& step);
    std::vector<Answer> Ask(const Question& question);
    /// The current directory, then the path in order.
    Names Listed() const;
    /// What is wrong with the index, with the counts, or was with an answer since the last time.
    std::string Faults();

  protected:
    System() = default;
    /// To be called when the disk stands.
    void Open(const World& world);
    void Close();
    virtual void ChangeDisk(const Disk& before, const Disk& after) = 0;
    virtual void SetTime(const std::string& folder, unsigned number) = 0;
    virtual void Tick(unsigned seconds, bool jump) = 0;

  private:
    void CreatePath(const World& world);
    void ReplacePath(const World& world, bool removes);
    void Enter(const World& world);
    void Expect(bool holds, const char* fault);
    ovDir Find(const std::string& name) const;

    void FollowDisk(const Step& step);
    void Add(const Step& step, ovDirAddLocn where);
    void Refresh(const Step& step, bool one);
    void Mark(const Step& step);
    void Listen();
    void StopListening();
    void WalkABit(const Operation& operation);
    void HearOfAll(bool on);
    void Interfere(const Step& step);

    ovPath m_owner, m_path;
    std::vector<ovDir> m_handles;
    std::vector<ovRegisteredInterest> m_interests;
    ovRegisteredInterest m_interference;
    bool m_isPredictable = true; ///< false while callbacks interfere
    std::string m_faults;
    unsigned m_count = 0; ///< of what must differ from time to time
};

std::unique_ptr<System> MakeSystem(const SystemKind& kind, const World& world);

} // namespace model
