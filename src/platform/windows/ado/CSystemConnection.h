// CSystemConnection: a connection of the system's ADO, which needs a provider that is installed there.
//
// The object of the system is made by Open, so that a system without ADO is reported there, with its HRESULT:
// CO_E_CLASSSTRING or REGDB_E_CLASSNOTREG. An unknown provider is reported as the system does, usually with
// adErrProviderNotFound, and a description that names it.
//
// Unlike the record sets of this library, those of the system end when their connection is closed.
#pragma once

#include "platform/windows/ado/CDispatch.h"

namespace NSTQ::Platform {

/// Makes an object of the system by ProgID; tests put others in its place.
using FMakeSystemObject = CDispatch (*)(const wchar_t* progId);

class CSystemConnection final : public CComObject<_Connection> {
public:
    explicit CSystemConnection(FMakeSystemObject make = &CDispatch::Create) : m_make(make) {}

    /// A string that CSourceDataInfo has built is passed with its values quoted, so that path and password may
    /// contain any character; others are passed unchanged.
    void Open(BSTR connectionString, BSTR userId, BSTR password, LONG options) override;
    CComPtr<_Recordset> OpenSchema(LONG schema) override;
    void Close() override;

    /// The open object of the system. Throws adErrObjectClosed.
    const CDispatch& GetObjectOfSystem() const;

private:
    const CSystemApartment m_apartment; ///< destroyed after the object
    FMakeSystemObject m_make;
    CDispatch m_object; ///< null while closed
};

} // namespace NSTQ::Platform
