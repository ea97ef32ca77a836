#include "providers/access/Access.h"

#include "providers/access/CAccessSource.h"
#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

using namespace Platform;

// By value like its siblings: the caller hands the file over.
std::unique_ptr<IDataSource> OpenAccess(CSourceInput input, const SSourceOptions& options) {
    return RaiseAsComError(options.path, [&] {
        return std::make_unique<CAccessSource>(
            std::make_shared<CDatabase>(input.GetFile(), options.path, options.passWord));
    });
}

} // namespace NSTQ::Providers
