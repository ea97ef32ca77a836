// A failure on its way to the C interface.
#pragma once

#include "tqcAccess.h"

#include <stdexcept>
#include <string>

namespace NSTQ::NSTQCore {

/// The text does not begin with the path; the interface adds it.
class CFault : public std::runtime_error {
public:
    CFault(tqc_status status, const std::string& text, std::int32_t code = 0)
        : std::runtime_error(text), m_status(status), m_code(code) {}

    tqc_status GetStatus() const { return m_status; }
    /// Of the layer below: an HRESULT or a system error code; 0 for none.
    std::int32_t GetCode() const { return m_code; }

private:
    tqc_status m_status;
    std::int32_t m_code;
};

} // namespace NSTQ::NSTQCore
