#include "platform/windows/ado/CSystemConnection.h"

#include "platform/ado/ConnectionString.h"
#include "platform/automation/WipeMemory.h"
#include "platform/windows/ado/CSystemRecordset.h"

#include <string>

namespace NSTQ::Platform {

namespace {

/// Appends KEY="VALUE"; unless the value is empty.
void AppendQuoted(std::string& text, std::string_view key, std::string_view value) {
    if (value.empty())
        return;
    text.append(key).append("=\"");
    for (const char c : value)
        text.append(c == '"' ? 2 : 1, c);
    text.append("\";");
}

/// The string as the system reads it. Its memory does not move, so that it can be wiped.
std::string QuoteValues(const SConnectionString& source) {
    std::string text;
    constexpr std::size_t roomForKeys = 128;
    text.reserve(roomForKeys + 2 * (source.provider.size() + source.dataSource.size() + source.properties.size() +
                                    source.passWord.size()));
    AppendQuoted(text, "Provider", source.provider);
    AppendQuoted(text, "Data Source", source.dataSource);
    AppendQuoted(text, "Extended Properties", source.properties);
    AppendQuoted(text, "Jet OLEDB:Database Password", source.passWord);
    return text;
}

bool IsProviderMissing(HRESULT result) {
    return result == adErrProviderNotFound || result == CO_E_CLASSSTRING || result == REGDB_E_CLASSNOTREG;
}

/// The name of the provider in a connection string; empty if only the system understands the string.
std::string FindProvider(const std::string& text) {
    try {
        SConnectionString parsed = ParseConnectionString(text);
        const CWipedMemory wiped(parsed.passWord.data(), parsed.passWord.size());
        return parsed.provider;
    } catch (const _com_error&) {
        return {};
    }
}

/// The failure of Connection.Open, with the provider's name where that is the reason.
_com_error Explain(const _com_error& error, const std::string& text) {
    if (!IsProviderMissing(error.Error()))
        return error;
    return _com_error(error.Error(),
                      "this system has no OLE DB provider " + FindProvider(text) + ": " + error.Description());
}

} // namespace

void CSystemConnection::Open(BSTR connectionString, BSTR userId, BSTR password, LONG options) {
    if (m_object)
        throw _com_error(adErrObjectOpen, "the connection is open already");
    CDispatch object = m_make(L"ADODB.Connection");
    std::string text = AnsiFromWide(BstrView(connectionString));
    const CWipedMemory wipedText(text.data(), text.size());
    auto built = ParseBuiltConnectionString(text);
    std::string quoted = built ? QuoteValues(*built) : std::string();
    const CWipedMemory wipedQuoted(quoted.data(), quoted.size());
    if (built)
        WipeMemory(built->passWord.data(), built->passWord.size());
    const CBstr source = built ? BstrFromAnsi(quoted) : CBstr(BstrView(connectionString));
    const CWipedMemory wipedSource(source.Get(), source.View().size() * sizeof(WCHAR));
    CMember open(L"Open");
    try {
        object.Call(open, {source.View(), BstrView(userId), BstrView(password), options});
    } catch (const _com_error& error) {
        throw Explain(error, text);
    }
    m_object = std::move(object);
}

CComPtr<_Recordset> CSystemConnection::OpenSchema(LONG schema) {
    CMember openSchema(L"OpenSchema");
    CDispatch rows = GetObjectOfSystem().CallForObject(openSchema, {schema});
    auto recordset = MakeComObject<CSystemRecordset>(m_make);
    recordset->Take(std::move(rows));
    return recordset;
}

void CSystemConnection::Close() {
    GetObjectOfSystem();
    const CDispatch object = std::move(m_object);
    CMember close(L"Close");
    object.Call(close);
}

const CDispatch& CSystemConnection::GetObjectOfSystem() const {
    if (!m_object)
        throw _com_error(adErrObjectClosed, "the connection is not open");
    return m_object;
}

} // namespace NSTQ::Platform
