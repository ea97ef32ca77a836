#include "platform/automation/Variant.h"

#include "platform/automation/Com.h"

namespace NSTQ::Platform {

void VariantInit(VARIANT* value) {
    value->vt = VT_EMPTY;
}

HRESULT VariantClear(VARIANT* value) {
    if (value->vt == VT_BSTR)
        SysFreeString(value->bstrVal);
    else if (value->vt == VT_DISPATCH && value->pdispVal != nullptr)
        value->pdispVal->Release();
    value->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == source)
        return S_OK;
    if (source->vt == VT_BSTR && source->bstrVal != nullptr) {
        BSTR text = target->vt == VT_BSTR ? target->bstrVal : nullptr;
        if (!SysReAllocStringLen(&text, source->bstrVal, SysStringLen(source->bstrVal)))
            return E_OUTOFMEMORY;
        if (target->vt != VT_BSTR)
            VariantClear(target);
        target->vt = VT_BSTR;
        target->bstrVal = text;
        return S_OK;
    }
    // The new reference first: the old one may be the only one that keeps the object alive.
    if (source->vt == VT_DISPATCH && source->pdispVal != nullptr)
        source->pdispVal->AddRef();
    VariantClear(target);
    *target = *source;
    return S_OK;
}

} // namespace NSTQ::Platform
