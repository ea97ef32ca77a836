#include "common/SCFolderTree.h"

#include "platform/Port.h"
#include "platform/errors/LastError.h"
#include "platform/files/Path.h"

namespace NSTQ::NSTQCore {

bool SCFolderTree::Remove(const char* pFolder) {
    std::string path;
    return Platform::MakeSystemPath(pFolder, path) && Platform::Succeeds(Platform::Port::RemoveTree(path));
}

} // namespace NSTQ::NSTQCore
