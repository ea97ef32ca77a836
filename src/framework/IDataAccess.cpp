#include "IDataAccess.h"

namespace NSTQ::NSTQCore {

// Defined here so that the interface's virtual table is in the library and nowhere else.
IDataAccess::~IDataAccess() = default;

} // namespace NSTQ::NSTQCore
