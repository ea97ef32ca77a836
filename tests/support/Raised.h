// The error that a call raises.
#pragma once

#include "tqcAccess/ComError.h"

#include <string>

namespace NSTQ::Tests {

/// The HRESULT that `call` raises as _com_error, or 0.
template <class TCall>
Platform::HRESULT Raised(TCall call) {
    try {
        call();
        return 0;
    } catch (const Platform::_com_error& error) {
        return error.Error();
    }
}

/// The description of the _com_error that `call` raises, or "nothing raised".
template <class TCall>
std::string CauseOf(TCall call) {
    try {
        call();
        return "nothing raised";
    } catch (const Platform::_com_error& error) {
        return error.Description();
    }
}

} // namespace NSTQ::Tests
