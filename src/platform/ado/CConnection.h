// CConnection: the class of "ADODB.Connection". It owns the open workbook or database.
#pragma once

#include "platform/ado/Ado.h"
#include "platform/ado/Provider.h"

namespace NSTQ::Platform {

class CConnection final : public CComObject<_Connection> {
public:
    void PutReadAhead(bool readsAhead) override { m_readsAhead = readsAhead; }
    void Open(BSTR connectionString, BSTR userId, BSTR password, LONG options) override;
    CComPtr<_Recordset> OpenSchema(LONG schema) override;
    void Close() override;

    /// Raises adErrObjectClosed.
    IDataSource& GetSource() const;

private:
    std::unique_ptr<IDataSource> m_source; ///< null while closed
    bool m_readsAhead = false;
};

} // namespace NSTQ::Platform
