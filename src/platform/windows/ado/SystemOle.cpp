#include "platform/windows/ado/SystemOle.h"

#include "platform/automation/WipeMemory.h"

#include <limits>

namespace NSTQ::Platform {

CArgument::CArgument(LONG number) {
    m_value.vt = VT_I4;
    m_value.lVal = number;
}

CArgument::CArgument(::IDispatch* object) {
    m_value.vt = VT_DISPATCH;
    m_value.pdispVal = object;
    if (object != nullptr)
        object->AddRef();
}

CArgument::CArgument(std::u16string_view text) {
    if (text.size() > std::numeric_limits<::UINT>::max() / sizeof(WCHAR))
        throw _com_error(E_OUTOFMEMORY);
    m_value.vt = VT_BSTR;
    m_value.bstrVal =
        ::SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()), static_cast<::UINT>(text.size()));
    if (m_value.bstrVal == nullptr)
        throw _com_error(E_OUTOFMEMORY);
}

CArgument::~CArgument() {
    if (m_value.vt == VT_BSTR)
        WipeMemory(m_value.bstrVal, ::SysStringByteLen(m_value.bstrVal));
    ::VariantClear(&m_value);
}

} // namespace NSTQ::Platform
