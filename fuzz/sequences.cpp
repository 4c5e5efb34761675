// Operations on a path and on the disk beneath it, in memory: after each the index is whole, and the answers
// to a sample of questions are those of the naive resolver. The input tells in its first byte how changes are
// detected, and then the operations, each a letter and three numbers; line feeds do not count. A short input
// goes round, since what an operation means is a matter of where it begins. PATH_MGR_MODE says which mode is
// meant.

#include <gtest/gtest.h>

#include "fuzz/body.hpp"
#include "model/difference.hpp"

namespace {

constexpr std::size_t Length = 200; ///< of a sequence, at least

std::size_t g_operations = 0;

/// What the model's own checks find ends the process too; the count is told at the end.
bool SetUp() {
    testing::GTEST_FLAG(break_on_failure) = true;
    std::atexit([] { std::fprintf(stderr, "%zu operations\n", g_operations); });
    return true;
}

model::Operation OperationOf(const std::uint8_t* bytes) {
    const auto number = [&](int i) { return static_cast<std::uint8_t>(bytes[i] - '0'); };
    const auto kind = static_cast<std::uint8_t>(bytes[0] - 'A');
    return {kind % model::System::Commands.size(), number(1), number(2), number(3)};
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool ready = SetUp();
    std::vector<std::uint8_t> bytes(data, data + size);
    std::erase(bytes, '\n');
    const std::size_t given = bytes.empty() ? 0 : (bytes.size() - 1) / 4;
    if (given == 0)
        return 0;
    const model::SystemKind kind{false, static_cast<model::Detection>(bytes[0] % 3)};
    model::World world = model::MakeWorld(kind);
    const auto system = model::MakeSystem(kind, world);
    // What a listing leaves open is found out at once, or it would matter when it is asked for.
    ExpectSame(model::Difference(world, *system), "", "answers are the resolver's from the start");
    for (std::size_t i = 0; i < std::max(given, Length); ++i, ++g_operations) {
        const model::Operation operation = OperationOf(&bytes[1 + i % given * 4]);
        model::World after = world;
        after.Apply(operation);
        system->Apply({operation, world, after});
        world = std::move(after);
        ExpectSame(model::Difference(world, *system, static_cast<unsigned>(i)), "",
                   "answers are the resolver's");
    }
    return 0;
}
