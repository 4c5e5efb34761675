#pragma once

#include <string>

#include "model/systems.hpp"

namespace model {

/// Where the library's answers to a sample of questions, by the seed, differ from the resolver's, or what is
/// broken in its index; empty if nothing.
std::string Difference(const World& world, System& system, unsigned seed = 0);

} // namespace model
