#include "tqcAccess/ComError.h"

#include <new>
#include <utility>

namespace NSTQ::Platform {

namespace {

/// The code matters more than the text: when there is not enough memory the error is thrown without a text.
std::shared_ptr<const std::string> Share(std::string&& description) {
    if (description.empty())
        return nullptr;
    try {
        return std::make_shared<const std::string>(std::move(description));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

_com_error::_com_error(HRESULT hr, std::string description)
    : m_hr(hr), m_pDescription(Share(std::move(description))) {}

_com_error::_com_error(const _com_error&) noexcept = default;
_com_error& _com_error::operator=(const _com_error&) noexcept = default;
_com_error::~_com_error() = default;

CPassWordError::CPassWordError(const CPassWordError&) noexcept = default;
CPassWordError& CPassWordError::operator=(const CPassWordError&) noexcept = default;
CPassWordError::~CPassWordError() = default;

const char* _com_error::Description() const noexcept {
    return m_pDescription == nullptr ? "" : m_pDescription->c_str();
}

const char* _com_error::what() const noexcept {
    return m_pDescription == nullptr ? "a COM call failed" : m_pDescription->c_str();
}

} // namespace NSTQ::Platform
