#include "platform/windows/ado/SystemValue.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace NSTQ::Platform {

namespace {

/// Values of at most eight bytes: they are in the same place of both types.
constexpr VARTYPE plainTypes[] = {VT_I2, VT_I4,  VT_R4,  VT_R8,  VT_CY, VT_DATE, VT_ERROR, VT_BOOL,
                                  VT_I1, VT_UI1, VT_UI2, VT_UI4, VT_I8, VT_UI8,  VT_INT,   VT_UINT};

bool IsPlain(VARTYPE type) {
    return std::find(std::begin(plainTypes), std::end(plainTypes), type) != std::end(plainTypes);
}

} // namespace

bool IsBytes(const ::VARIANT& value) {
    return value.vt == (VT_ARRAY | VT_UI1) && value.parray != nullptr && ::SafeArrayGetDim(value.parray) == 1;
}

std::span<const unsigned char> GetBytes(const ::VARIANT& value) {
    const ::SAFEARRAY& array = *value.parray;
    return {static_cast<const unsigned char*>(array.pvData), array.rgsabound[0].cElements};
}

void ConvertValue(const ::VARIANT& value, VARIANT& target, CBstr& text) {
    target.vt = value.vt;
    switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return;
    case VT_BSTR:
        target.vt = VT_NULL; // unless there is memory for it
        text.Assign(ViewOf(value.bstrVal));
        target.vt = VT_BSTR;
        target.bstrVal = text.Get();
        return;
    case VT_DECIMAL:
        target.decVal = {value.decVal.scale, value.decVal.sign, value.decVal.Hi32, value.decVal.Lo64};
        return;
    default:
        break;
    }
    if (!IsPlain(value.vt)) {
        target.vt = VT_NULL;
        throw _com_error(DISP_E_TYPEMISMATCH, "a value of type " + std::to_string(value.vt) + " cannot be read");
    }
    static_assert(sizeof target.llVal == sizeof value.llVal);
    std::memcpy(&target.llVal, &value.llVal, sizeof target.llVal);
}

} // namespace NSTQ::Platform
