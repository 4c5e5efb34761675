#include <cstring>
#include <string>

#include <boost/numeric/conversion/cast.hpp>
#include <ovsel/handles.hpp>

#include "host_interfaces/text.hpp"
#include "host_interfaces/utility.hpp"
#include "ovsel/frame/handlecheck.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathalldiriteminfo.hpp"

void AssertPathInService(const ovPath& path) {
    if (!IsPathInService(path))
        HostPrintf("asserted here\n");
}

ovPath ovGetPathOfDir(const ovDir& dir) { return ovPath(dir->GetManager()); }

bool ovIsDirHandleValid(const ovDir& dir) {
    // The record first: the manager of a dead one may be gone.
    return *dir && dir->IsLinked() && dir->GetManager()->IsValid();
}

ovDir ovGetNullDir(ovPath path) {
    AssertPathInService(path);
    return ovDir(path->GetNullDir());
}

ovDirType ovGetDirType(const ovDir& dir) { return *dir ? dir->GetDirType() : ovDirTypeNull; }

ustring ovGetDirName(const ovDir& dir) {
    ustring name;
    dir->GetFullName(name);
    return name;
}

namespace {

std::string NarrowDirName(const ovDir& dir) {
    return fl::i18n::codecvt_ustring_to_narrow_string()(ovGetDirName(dir));
}

} // namespace

char* ovGetDirName(const ovDir& dir, char* buffer) {
    const std::string name = NarrowDirName(dir);
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    return buffer;
}

int ovGetDirNameLen(const ovDir& dir) { return boost::numeric_cast<int>(NarrowDirName(dir).size()); }

ustring ovGetBaseDirName(const ovDir& dir) { return ustring(dir->GetName()); }

bool ovIsSameDir(ovDir a, ovDir b) { return *a == *b; }

bool ovIsAbsoluteDir(const ovDir&) { return true; }
