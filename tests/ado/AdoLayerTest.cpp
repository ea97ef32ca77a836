// The ADO objects over a provider, the selection of the provider, connection strings and statements.
#include "SCDataAccessDefine.h"
#include "ado/ScriptedSource.h"
#include "platform/ado/ConnectionString.h"
#include "platform/ado/DataSource.h"
#include "platform/ado/Statement.h"
#include "support/CompoundBuilder.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using namespace NSTQ;
using namespace NSTQ::Platform;
using namespace NSTQ::Providers;
using namespace NSTQ::Tests;
using namespace std::string_literals;

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

    template <class T>
    static CComPtr<T> Create(const char16_t* progId) {
        CLSID clsid{};
        CComPtr<T> object;
        EXPECT_TRUE(CLSIDFromProgID(progId, &clsid) == S_OK && CoCreateInstance(clsid, object) == S_OK);
        return object;
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
    for (const HRESULT expected : {S_OK, adErrObjectOpen})
        EXPECT_EQ(Open(connection), expected);
    EXPECT_EQ(Open(rows, connection, u"DROP TABLE [T$]"), DB_E_ERRORSINCOMMAND);
    for (const HRESULT expected : {S_OK, adErrObjectOpen})
        EXPECT_EQ(Open(rows, connection), expected);
    connection->Close();
    connection = nullptr;
    Fields& fields = *rows->GetFields();
    EXPECT_TRUE(rows->GetRecordCount() == 1 && fields.GetCount() == 2);
    const auto index = [](LONG number) { return Value(VT_I4, &VARIANT::lVal, number); };
    for (const Cell& none : {Cell(index(-1)), Cell(index(2)), Cell(u"Nam")})
        EXPECT_EQ(Raised([&] { fields.GetItem(none.Value()); }), adErrItemNotFound);
    Field* const name = fields.GetItem(Cell(u"nAME").Value());
    EXPECT_TRUE(name == fields.GetItem(index(1)) && name->GetValue().dblVal == 11);
    rows->MoveNext();
    EXPECT_TRUE(rows->GetEOF() && Raised([&] { name->GetValue(); }) == adErrNoCurrentRecord);
    EXPECT_EQ(Raised([&] { rows->MoveNext(); }), adErrNoCurrentRecord);
}

TEST_F(AdoLayer, TheContentSelectsTheProviderAndTheStringStatesWhatIsExpected) {
    const auto zip = "PK\x03\x04"s;
    const auto jet = "\0\1\0\0Standard Jet DB\0"s;
    const auto ace = "\0\1\0\0Standard ACE DB\0"s;
    const auto book = CCompoundBuilder().Add(u"Workbook", "").Finish();
    // The directory of a large one lies behind the part that 109 sectors of the allocation table describe.
    const auto seal = [](std::size_t size) {
        return CCompoundBuilder().Add(u"EncryptionInfo", Noise(size)).Add(u"Map", "").Add(u"EncryptedPackage", "");
    };
    const auto sealed = seal(0).Finish(), large = seal(110 * 128 * 512).Finish();
    constexpr ESourceFormat none{9}; // refused with E_FAIL
    using enum ESourceFormat;
    const std::tuple<const char*, std::string, std::string, ESourceFormat> cases[] = {
        {"xlsx", zip, "Excel 12.0;HDR=NO;IMEX=1", Xlsx},
        {"xlsx as the old kind", zip, "excel 8.0", Xlsx},
        {"xls", book.bytes, "Excel 12.0", Xls},
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
                                     "pw", format == Xls};
        EXPECT_EQ(Raised([&] { OpenDataSource(text); }), format == none ? E_FAIL : 0);
        if (format == none)
            continue;
        EXPECT_EQ(script.format, format);
        EXPECT_EQ(script.options.path, text.dataSource);
        EXPECT_EQ(script.options.passWord, "pw");
        EXPECT_EQ(script.options.readsAhead, format == Xls);
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
        {ace, script.folder.WriteFile("x", "\x09\x08\x08\x00\x00\x05"s), adErrProviderNotFound, "not read xls files"},
    };
    const auto xls = SetProvider(ESourceFormat::Xls, nullptr);
    for (const auto& [provider, path, hr, described] : cases) {
        const auto open = [&, &name = provider, &file = path] { OpenDataSource({name, file, "Excel 8.0", ""}); };
        EXPECT_EQ(Raised(open), hr) << described;
        EXPECT_THAT(CauseOf(open), testing::HasSubstr(described));
    }
    SetProvider(ESourceFormat::Xls, xls);
}

TEST(ConnectionString, OrdinaryStringsFollowTheRulesOfOleDb) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"", "", ""},
        {" ; ;;", "", ""},
        {"data SOURCE=a", "a", ""},
        {"Data Source=a;Data Source=b", "b", ""},
        {" Data Source = a b ; Extended Properties = x = y ", "a b", "x = y"},
        {"Data Source=\"a;b\"\"c' \" ;Extended Properties='d\"''e'", "a;b\"c' ", "d\"'e"},
        {"Data Source=a\"b;Extended Properties=\"\"", "a\"b", ""},
        {"Data==Source=no;Data Source=/x/y==z.xlsx", "/x/y==z.xlsx", ""},
        {"Data Source=;Extended Properties=p;Unknown=\"q;\"", "", "p"},
        {"Data Source=\tC:\\dir\\a.xls\r\n", "C:\\dir\\a.xls", ""},
        // Quoted, but otherwise like the strings that the library builds.
        {"Data Source=\"/d/a;b.xlsx\";Extended Properties=\"Excel 12.0;HDR=NO\";Jet OLEDB:Database Password=;",
         "/d/a;b.xlsx", "Excel 12.0;HDR=NO"},
    };
    for (const auto& [text, source, properties] : cases) {
        const auto parsed = ParseConnectionString(text);
        EXPECT_EQ(parsed.dataSource + '|' + parsed.properties, source + ('|' + std::string(properties))) << text;
    }
    const auto all = ParseConnectionString("provider=P;JET OLEDB:database password='x;y';read AHEAD=yes");
    EXPECT_EQ(all.provider + all.passWord, "Px;y");
    EXPECT_TRUE(all.readsAhead && !ParseConnectionString("Read Ahead=YES;Read Ahead=NO").readsAhead);
    for (const char* text : {"a", "Data Source=a;b", "=a", "a=\"b", "a='b''", "a=\"b\"c", "a==b", "a;=b"})
        EXPECT_EQ(Raised([&] { ParseConnectionString(text); }), DB_E_BADINITSTRING) << text;
}

struct Kind {
    const char* before;
    const char* after;
    const char* extension;
};

using S = NSTQCore::SCDataAccessDefine;
const Kind kinds[] = {{S::OFFICE2003_PRECONNECTSTRING, S::EXCLE2003_POSTCONNECTSTRING, ".xls"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::EXCLE2007_POSTCONNECTSTRING, ".XLS"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::EXCLE2007_POSTCONNECTSTRING, ".xlsx"},
                      {S::OFFICE2003_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, ".mdb"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, ".Mdb"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, ".accdb"}};
const std::string passWordClause = ";Jet OLEDB:Database Password=";

void ExpectParsed(const Kind& kind, const std::string& path, const std::string& password) {
    const std::string text = kind.before + path + kind.after + passWordClause + password + ';';
    const auto parsed = ParseConnectionString(text);
    ASSERT_EQ(parsed.dataSource, path) << text;
    ASSERT_EQ(parsed.passWord, password) << text;
    ASSERT_EQ(kind.before, "Provider=" + parsed.provider + ";Data Source=");
    ASSERT_EQ(kind.after, ";Extended Properties=\"" + parsed.properties + '"');
}

TEST(ConnectionString, BuiltStringsOpenTheirOwnFileWhateverPathAndPasswordHold) {
    // Every pair of these parts.
    std::vector<std::string> parts = {"", "a", " ", ";", "=", "\"", "'", "a;b=c", "\"a\"", "'b", ";;", "\xFF"};
    for (const char* part : {"Data Source=/etc/passwd;", ";Extended Properties=", ";Extended Properties=\"\"",
                             ";Data Source=b.xlsx;", passWordClause.c_str()})
        parts.emplace_back(part);
    for (const Kind& kind : kinds)
        parts.insert(parts.end(), {kind.before, kind.after});
    for (const Kind& kind : kinds) {
        const std::string extension = kind.extension, plain = "/d/a" + extension;
        for (const auto& first : parts)
            for (const auto& second : parts) {
                ExpectParsed(kind, first + second + extension, "");
                ExpectParsed(kind, "/d/" + first + extension + second + extension, first);
                ExpectParsed(kind, plain, first + second);
            }
        // Everything between path and password: allowed in a path, and in a password unless a path stands before it.
        for (const Kind& other : kinds) {
            const std::string seam = other.after + passWordClause;
            ExpectParsed(kind, plain + seam + "b;" + extension, "secret");
            ExpectParsed(kind, "/d/" + seam + seam + extension, ";");
            ExpectParsed(kind, plain, seam + seam);
            ExpectParsed(kind, plain, "b.txt" + seam + "c");
        }
        ExpectParsed(kind, std::string(260 - extension.size(), ';') + extension, std::string(259, '"'));
    }
}

TEST(ConnectionString, AmbiguousStringsTakeTheLongerPath) {
    const Kind& kind = kinds[2];
    const std::string seam = kind.after + passWordClause;
    ExpectParsed(kind, "a.xlsx" + seam + "b.xlsx", "c");
    // A path with an unknown extension, not quoted.
    EXPECT_EQ(ParseConnectionString(kind.before + ("/d/a;b.xlsm" + seam) + ';').dataSource, "/d/a;b.xlsm");
}

TEST(Statement, TakesTheTextBetweenTheOuterBrackets) {
    const std::pair<const char16_t*, const char16_t*> good[] = {
        {u"SELECT * FROM [Sheet1$]", u"Sheet1$"},           {u"select*from[a]", u"a"},
        {u" SELECT \t* \n FROM  [ a ]b[ ] ", u" a ]b[ "},   {u"SELECT * FROM []", u""},
        {u"SELECT * FROM [It''s a.b!c$]", u"It''s a.b!c$"},
    };
    for (const auto& [text, name] : good)
        EXPECT_EQ(ParseStatement(text), name);
    for (const char16_t* text :
         {u"", u"SELECT * FROM [a", u"SELECT * FROM a", u"SELECT * FROM ]a[", u"[a]", u"SELECT a FROM [a]",
          u"SELECT * FROM [a] WHERE 1", u"DELETE * FROM [a]", u"SELECT * FROM x [a]", u"SELECT *"})
        EXPECT_EQ(Raised([&] { ParseStatement(text); }), DB_E_ERRORSINCOMMAND);
}

} // namespace
