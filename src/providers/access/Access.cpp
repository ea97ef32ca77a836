#include "providers/access/Access.h"

#include "providers/access/CAccessSource.h"
#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

using namespace Platform;

std::unique_ptr<IDataSource> OpenAccess(const SSourceOptions& options) {
    return OpenAccessDatabase(
        RaiseAsComError(options.strPath, [&] { return std::make_shared<CFileAccess>(options.strPath); }), options);
}

std::unique_ptr<IDataSource> OpenAccessDatabase(std::shared_ptr<IRandomAccess> input, const SSourceOptions& options) {
    return RaiseAsComError(options.strPath, [&] {
        return std::make_unique<CAccessSource>(
            std::make_shared<CDatabase>(std::move(input), options.strPath, options.strPassWord));
    });
}

} // namespace NSTQ::Providers
