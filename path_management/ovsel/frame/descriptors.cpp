#include <ovsel/descriptors.hpp>

#include "ovsel/frame/builtin.hpp"

// OVSEL_VERSION and OVSEL_RELATIVE_PATH come from the build, which knows what is installed where.
namespace {

constexpr ovFcnTableEntry entries[] = {{&AbsolutizePath, nullptr}};
constexpr ovFcnTable table = {entries, 1, 1, "ovsel", OVSEL_VERSION};

} // namespace

const char* const ovsel_version = OVSEL_VERSION;
const char* const ovsel_build_date = __DATE__;
const char* const ovsel_relative_path = OVSEL_RELATIVE_PATH;

const ovFcnTable* QuerySVFcnTable_ovsel() { return &table; }
