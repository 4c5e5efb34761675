#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <ovsel/ovsel.hpp>

#include "model/world.hpp"

namespace model {

/// On what disk, and how the library learns of changes there.
struct SystemKind {
    bool isReal;
    Detection detection;
};

std::vector<SystemKind> SystemKinds();
std::string NameOf(const SystemKind& kind);
inline std::ostream& operator<<(std::ostream& stream, const SystemKind& kind) {
    return stream << NameOf(kind);
}

/// The library on a disk that does what the world says.
class System {
  public:
    virtual ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    /// Does to the library, and to the disk beneath it, what led from one world to the other.
    void Apply(const World& before, const World& after, const Operation& operation);
    std::vector<Answer> Ask(const Question& question);
    std::string BrokenInvariants();

  protected:
    System() = default;
    /// To be called when the disk stands.
    void Open(const World& world);
    void Close();
    virtual void ChangeDisk(const Disk& before, const Disk& after, const Operation& operation) = 0;
    virtual void Tick(unsigned seconds) = 0;

  private:
    void Mark(const World& world, const Operation& operation);
    void Search(const Operation& operation);
    ovDir Find(unsigned number);

    ovPath m_owner, m_path;
    std::vector<ovDir> m_handles;
    std::vector<ovRegisteredInterest> m_interests;
    std::size_t m_eventCount = 0;
};

std::unique_ptr<System> MakeSystem(const SystemKind& kind, const World& world);

} // namespace model
