// The built-in classes; see platform/automation/Com.h.
#include "platform/ado/CConnection.h"
#include "platform/ado/CRecordset.h"

namespace NSTQ::Platform {

std::span<const SBuiltinClass> GetBuiltinClasses() {
    static constexpr SBuiltinClass classes[] = {
        {u"ADODB.Connection", [] { return CComPtr<IUnknown>(MakeComObject<CConnection>()); }},
        {u"ADODB.Recordset", [] { return CComPtr<IUnknown>(MakeComObject<CRecordset>()); }},
    };
    return classes;
}

} // namespace NSTQ::Platform
