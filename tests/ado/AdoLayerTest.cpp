// The ADO objects over a provider, and the selection of the provider.
#include "ado/ScriptedSource.h"
#include "platform/ado/DataSource.h"
#include "support/CompoundBuilder.h"
#include "tqcAccess/CodePage.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace NSTQ;
using namespace NSTQ::Platform;
using namespace NSTQ::Providers;
using namespace NSTQ::Tests;
using namespace std::string_literals;

/// A compound file with these empty streams.
SCompoundBytes CompoundFile(const std::vector<std::u16string>& names) {
    CCompoundBuilder builder;
    for (const auto& name : names)
        builder.Add(name, "");
    return builder.Finish();
}

template <class T>
CComPtr<T> Create(const char16_t* progId) {
    CLSID clsid{};
    CComPtr<T> object;
    EXPECT_EQ(CLSIDFromProgID(progId, &clsid), S_OK);
    EXPECT_EQ(CoCreateInstance(clsid, object), S_OK);
    return object;
}

class AdoLayer : public CScriptedTest {
protected:
    AdoLayer() { script.table = {{u"F1", u"Name"}, {{10.0, 11.0}}}; }
    HRESULT Open(const CComPtr<_Connection>& connection) const {
        const CBstr text = BstrFromAnsi("Provider=Microsoft.ACE.OLEDB.12.0;Data Source='" + script.File("a.xlsx") +
                                        "';Extended Properties='Excel 12.0'");
        return Raised([&] { connection->Open(text.Get(), nullptr, nullptr, adConnectUnspecified); });
    }
    static HRESULT Open(const CComPtr<_Recordset>& rows, const CComPtr<_Connection>& on,
                        const char16_t* statement = u"SELECT * FROM [T$]") {
        const VARIANT connection = Value(VT_DISPATCH, &VARIANT::pdispVal, on.Get());
        return Raised(
            [&] { rows->Open(Cell(statement).Value(), connection, adOpenForwardOnly, adLockReadOnly, adCmdText); });
    }

    const CComApartment apartment;
};

TEST_F(AdoLayer, CallsInTheWrongStateAreRefused) {
    auto connection = Create<_Connection>(u"ADODB.Connection");
    const auto rows = Create<_Recordset>(u"adodb.recordset");
    const std::function<void()> closed[] = {[&] { connection->Close(); },   [&] { connection->OpenSchema(20); },
                                            [&] { rows->Close(); },         [&] { rows->GetEOF(); },
                                            [&] { rows->MoveNext(); },      [&] { rows->GetFields(); },
                                            [&] { rows->GetRecordCount(); }};
    for (const auto& call : closed)
        EXPECT_EQ(Raised(call), adErrObjectClosed) << &call - closed;
    EXPECT_EQ(Open(rows, connection), adErrObjectClosed);
    EXPECT_EQ(Open(rows, nullptr), adErrInvalidArgument);
    EXPECT_EQ(Raised([&] { rows->PutCursorLocation(7); }), adErrInvalidArgument);
    rows->PutCursorLocation(adUseClient);

    EXPECT_EQ(Open(connection), 0);
    EXPECT_EQ(Open(connection), adErrObjectOpen);
    EXPECT_EQ(Raised([&] { connection->OpenSchema(4); }), adErrInvalidArgument);
    EXPECT_EQ(Open(rows, connection, u"SELECT * FROM [missing]"), DB_E_NOTABLE);
    EXPECT_EQ(Open(rows, connection, u"DROP TABLE [T$]"), DB_E_ERRORSINCOMMAND);
    EXPECT_EQ(Open(rows, connection), 0);
    EXPECT_EQ(Open(rows, connection), adErrObjectOpen);
    EXPECT_EQ(Raised([&] { rows->PutCursorLocation(adUseClient); }), adErrObjectOpen);
    connection->Close();
    connection = nullptr;

    EXPECT_EQ(rows->GetRecordCount(), 1);
    Fields& fields = *rows->GetFields();
    EXPECT_EQ(fields.GetCount(), 2);
    const auto index = [](LONG number) { return Value(VT_I4, &VARIANT::lVal, number); };
    for (const Cell& none : {Cell(index(-1)), Cell(index(2)), Cell(u"Nam")})
        EXPECT_EQ(Raised([&] { fields.GetItem(none.Value()); }), adErrItemNotFound);
    Field* const name = fields.GetItem(Cell(u"nAME").Value());
    EXPECT_EQ(name, fields.GetItem(index(1)));
    EXPECT_EQ(name->GetName(), u"Name");
    EXPECT_EQ(name->GetValue().dblVal, 11);
    rows->MoveNext();
    EXPECT_TRUE(rows->GetEOF());
    EXPECT_EQ(Raised([&] { name->GetValue(); }), adErrNoCurrentRecord);
    EXPECT_EQ(Raised([&] { rows->MoveNext(); }), adErrNoCurrentRecord);
    rows->Close();
    EXPECT_EQ(Raised([&] { rows->GetEOF(); }), adErrObjectClosed);
}

TEST_F(AdoLayer, AFailedMoveIsFinal) {
    const auto connection = Create<_Connection>(u"ADODB.Connection");
    const auto rows = Create<_Recordset>(u"ADODB.Recordset");
    ASSERT_EQ(Open(connection), 0);
    script.FailAt("MoveNext", E_FAIL, 2);
    ASSERT_EQ(Open(rows, connection), 0);
    EXPECT_EQ(Raised([&] { rows->MoveNext(); }), E_FAIL);
    EXPECT_EQ(Raised([&] { rows->MoveNext(); }), E_FAIL);
    EXPECT_EQ(Raised([&] { rows->GetEOF(); }), E_FAIL);
    EXPECT_EQ(Raised([&] { rows->GetFields()->GetItem(Cell(u"F1").Value())->GetValue(); }), E_FAIL);
    rows->Close();
    script.FailAt("MoveNext", E_FAIL);
    EXPECT_EQ(Open(rows, connection), E_FAIL);
    EXPECT_EQ(Open(rows, connection), 0);
}

TEST_F(AdoLayer, TheContentSelectsTheProviderAndTheStringStatesWhatIsExpected) {
    const auto zip = "PK\x03\x04"s;
    const auto jet = "\0\1\0\0Standard Jet DB\0"s;
    const auto ace = "\0\1\0\0Standard ACE DB\0"s;
    const auto sealed =
        CompoundFile({u"DataSpaces/Version", u"DataSpaceMap", u"EncryptionInfo", u"EncryptedPackage"});
    // The directory lies behind the part that 109 sectors of the allocation table describe.
    const auto large = CCompoundBuilder()
                           .Add(u"DataSpaces/Version", "")
                           .Add(u"EncryptionInfo", Noise(110 * 128 * 512))
                           .Add(u"EncryptedPackage", "")
                           .Finish();
    constexpr ESourceFormat none{9}; // refused with E_FAIL
    using enum ESourceFormat;
    const std::tuple<const char*, std::string, std::string, ESourceFormat> cases[] = {
        {"xlsx", zip, "Excel 12.0;HDR=NO;IMEX=1", Xlsx},
        {"xlsx as the old kind", zip, "excel 8.0", Xlsx},
        {"xls", CompoundFile({u"Workbook"}).bytes, "Excel 12.0", Xls},
        {"record stream", "\x09\x08\x08\x00\x00\x05"s, "Excel 8.0", Xls},
        {"encrypted workbook", sealed.bytes, "Excel 12.0", Xlsx},
        {"encrypted workbook with its directory at the end", large.bytes, "Excel 12.0", Xlsx},
        {"cut compound file", sealed.bytes.substr(0, sealed.entries.at(u"EncryptedPackage")), "Excel 12.0", none},
        {"database", jet, "", Access},
        {"newer database", ace, "  ", Access},
        {"database as workbook", jet, "Excel 8.0", none},
        {"workbook as database", zip, "", none},
        {"unknown properties", zip, "text;HDR=NO", none},
        {"text", "a,b\r\n", "Excel 12.0", none},
        {"empty", "", "", none},
    };
    for (const auto& [title, content, properties, format] : cases) {
        SCOPED_TRACE(title);
        const SConnectionString text{"microsoft.jet.oledb.4.0", script.folder.WriteFile("file", content), properties,
                                     "pw"};
        EXPECT_EQ(Raised([&] { OpenDataSource(text); }), format == none ? E_FAIL : 0);
        if (format == none)
            continue;
        EXPECT_EQ(script.format, format);
        EXPECT_EQ(script.options.path, text.dataSource);
        EXPECT_EQ(script.options.passWord, "pw");
        EXPECT_EQ(script.options.hasHeaderRow, properties.find("HDR=NO") == std::string::npos);
    }
}

TEST_F(AdoLayer, SourcesThatCannotBeOpenedAreDescribed) {
    const std::string ace = "Microsoft.ACE.OLEDB.12.0";
    const std::string book = script.File("a.xlsx");
    const std::tuple<std::string, std::string, HRESULT, std::string> cases[] = {
        {"", book, adErrProviderNotFound, "names no provider"},
        {"SQLOLEDB", book, adErrProviderNotFound, "SQLOLEDB"},
        {ace, "", E_FAIL, "no file"},
        {ace, "/no/such", E_FAIL, "/no/such: the file cannot be opened (error 3)"},
        {ace, script.folder.Path(), E_FAIL, "cannot be opened"},
        {ace, script.folder.WriteFile("x", CompoundFile({u"Workbook"}).bytes), adErrProviderNotFound,
         "not read xls files"},
    };
    const auto xls = SetProvider(ESourceFormat::Xls, nullptr);
    for (const auto& [provider, path, hr, described] : cases) {
        try {
            OpenDataSource({provider, path, "Excel 8.0", ""});
            ADD_FAILURE() << described;
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), hr) << described;
            EXPECT_NE(std::string(error.Description()).find(described), std::string::npos) << error.Description();
        }
    }
    SetProvider(ESourceFormat::Xls, xls);
}

} // namespace
