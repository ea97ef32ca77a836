// The built-in classes of a build that uses the system's ADO; see platform/automation/Com.h.
#include "platform/windows/ado/CSystemConnection.h"
#include "platform/windows/ado/CSystemRecordset.h"

namespace NSTQ::Platform {

std::span<const SBuiltinClass> GetBuiltinClasses() {
    static constexpr SBuiltinClass classes[] = {
        {u"ADODB.Connection", [] { return CComPtr<IUnknown>(MakeComObject<CSystemConnection>()); }},
        {u"ADODB.Recordset", [] { return CComPtr<IUnknown>(MakeComObject<CSystemRecordset>()); }},
    };
    return classes;
}

} // namespace NSTQ::Platform
