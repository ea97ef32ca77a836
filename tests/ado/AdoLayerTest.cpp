#include "CADOOperater.h"
#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "ado/ScriptedAdo.h"
#include "platform/ado/DataSource.h"
#include "providers/ProviderRegistry.h"
#include "support/CompoundBuilder.h"
#include "support/TempFolder.h"
#include "tqcAccess/CodePage.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using namespace NSTQ::Platform;
using namespace NSTQ::Providers;
using namespace NSTQ::Tests;
using namespace std::string_literals;

/// A source of three rows whose nth MoveNext fails, and what it was opened with.
struct Fake {
    SSourceOptions options;
    ESourceFormat format = ESourceFormat::Xlsx;
    int failingMove = 0;
    int sources = 0;
    HRESULT openFails = 0;
} fake;

class CFakeRows final : public IRowSource {
public:
    explicit CFakeRows(std::shared_ptr<int> keep) : m_keep(std::move(keep)) {}
    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    std::int64_t GetRowCount() const override { return 3; }
    bool MoveNext() override {
        if (++m_moves == fake.failingMove)
            throw _com_error(E_FAIL, "damaged");
        return m_moves <= 3;
    }
    const VARIANT& GetValue(std::size_t column) override {
        m_value.Get()->vt = VT_I4;
        m_value.Get()->lVal = m_moves * 10 + static_cast<LONG>(column);
        return m_value.Value();
    }

private:
    std::vector<std::u16string> m_names = {u"F1", u"Name"};
    std::shared_ptr<int> m_keep;
    int m_moves = 0;
    CVariant m_value;
};

class CFakeSource final : public IDataSource {
public:
    CFakeSource() { ++fake.sources; }
    ~CFakeSource() override { --fake.sources; }
    std::vector<STableSchema> ListTables() override {
        return {{u"'It''s$'", u"TABLE"}, {u"MSys", u"SYSTEM TABLE"}, {u"T$", u"TABLE"}};
    }
    std::unique_ptr<IRowSource> OpenTable(std::u16string_view name) override {
        if (name != u"It''s$" && name != u"T$")
            throw _com_error(DB_E_NOTABLE, "no table " + AnsiFromWide(name));
        return std::make_unique<CFakeRows>(m_keep);
    }

private:
    std::shared_ptr<int> m_keep = std::make_shared<int>(0);
};

template <ESourceFormat format>
std::unique_ptr<IDataSource> OpenFake(CSourceInput, const SSourceOptions& options) {
    fake.options = options;
    fake.format = format;
    if (fake.openFails != 0)
        throw _com_error(fake.openFails, "refused");
    return std::make_unique<CFakeSource>();
}

/// A compound file with these streams, without anything in them.
SCompoundBytes CompoundFile(const std::vector<std::u16string>& names) {
    CCompoundBuilder builder;
    for (const auto& name : names)
        builder.Add(name, "");
    return builder.Finish();
}

class AdoLayer : public testing::Test {
protected:
    AdoLayer()
        : m_older{SetProvider(ESourceFormat::Xlsx, &OpenFake<ESourceFormat::Xlsx>),
                  SetProvider(ESourceFormat::Xls, &OpenFake<ESourceFormat::Xls>),
                  SetProvider(ESourceFormat::Access, &OpenFake<ESourceFormat::Access>)} {
        fake = {};
        CoInitialize(nullptr);
        strBook = folder.WriteFile("a.xlsx", zip);
    }
    ~AdoLayer() override {
        EXPECT_EQ(fake.sources, 0);
        CoUninitialize();
        EXPECT_EQ(GetComInitCount(), 0U);
        for (std::size_t i = 0; i < sourceFormatCount; ++i)
            SetProvider(static_cast<ESourceFormat>(i), m_older[i]);
    }
    template <class T>
    static CComPtr<T> Create(const char16_t* progId) {
        CLSID clsid{};
        CComPtr<T> object;
        EXPECT_EQ(CLSIDFromProgID(progId, &clsid), S_OK);
        EXPECT_EQ(CoCreateInstance(clsid, object), S_OK);
        return object;
    }
    static HRESULT Open(const CComPtr<_Connection>& connection, const std::string& text) {
        return Raised([&] { connection->Open(BstrFromAnsi(text).Get(), nullptr, nullptr, adConnectUnspecified); });
    }
    std::string Book(const std::string& path) const {
        return "Provider=Microsoft.ACE.OLEDB.12.0;Data Source='" + path + "';Extended Properties='Excel 12.0'";
    }
    static HRESULT Open(const CComPtr<_Recordset>& rows, const CComPtr<_Connection>& on, const char* statement) {
        const Cell source(std::u16string(statement, statement + std::strlen(statement)));
        VARIANT connection;
        connection.vt = VT_DISPATCH;
        connection.pdispVal = on.Get();
        return Raised([&] { rows->Open(source.Value(), connection, adOpenForwardOnly, adLockReadOnly, adCmdText); });
    }

    const std::string zip = "PK\x03\x04";
    CTempFolder folder;
    std::string strBook;

private:
    FOpenProvider m_older[sourceFormatCount];
};

/// The statement for all rows of the sheet that there is.
constexpr const char* all = "SELECT * FROM [T$]";

Cell Index(LONG index) {
    Cell cell(Null{});
    cell.Value().vt = VT_I4;
    cell.Value().lVal = index;
    return cell;
}

TEST_F(AdoLayer, CallsInTheWrongStateSaySo) {
    auto connection = Create<_Connection>(u"ADODB.Connection");
    const auto rows = Create<_Recordset>(u"adodb.recordset");
    const std::function<void()> closed[] = {[&] { connection->Close(); },   [&] { connection->OpenSchema(20); },
                                            [&] { rows->Close(); },         [&] { rows->GetEOF(); },
                                            [&] { rows->MoveNext(); },      [&] { rows->GetFields(); },
                                            [&] { rows->GetRecordCount(); }};
    for (const auto& call : closed)
        EXPECT_EQ(Raised(call), adErrObjectClosed);
    EXPECT_EQ(Open(rows, connection, all), adErrObjectClosed);
    EXPECT_EQ(Open(rows, nullptr, all), adErrInvalidArgument);
    EXPECT_EQ(Raised([&] { rows->PutCursorLocation(7); }), adErrInvalidArgument);
    rows->PutCursorLocation(adUseClient);

    EXPECT_EQ(Open(connection, Book(strBook)), 0);
    EXPECT_EQ(Open(connection, Book(strBook)), adErrObjectOpen);
    EXPECT_EQ(Raised([&] { connection->OpenSchema(4); }), adErrInvalidArgument);
    const std::pair<const char*, HRESULT> statements[] = {{"SELECT * FROM [U$]", DB_E_NOTABLE},
                                                          {"DROP TABLE [T$]", DB_E_ERRORSINCOMMAND},
                                                          {all, 0},
                                                          {all, adErrObjectOpen}};
    for (const auto& [statement, hr] : statements)
        EXPECT_EQ(Open(rows, connection, statement), hr) << statement;
    EXPECT_EQ(Raised([&] { rows->PutCursorLocation(adUseClient); }), adErrObjectOpen);
    connection->Close();
    connection = nullptr;

    EXPECT_EQ(rows->GetRecordCount(), 3);
    Fields& fields = *rows->GetFields();
    EXPECT_EQ(fields.GetCount(), 2);
    for (const Cell& none : {Index(-1), Index(2), Cell(u"Nam")})
        EXPECT_EQ(Raised([&] { fields.GetItem(none.Value()); }), adErrItemNotFound);
    Field* const name = fields.GetItem(Cell(u"nAME").Value());
    EXPECT_EQ(name, fields.GetItem(Index(1).Value()));
    EXPECT_EQ(name->GetName(), u"Name");
    for (LONG row = 1; row <= 3; ++row, rows->MoveNext())
        EXPECT_EQ(name->GetValue().lVal, row * 10 + 1);
    EXPECT_TRUE(rows->GetEOF());
    EXPECT_EQ(Raised([&] { name->GetValue(); }), adErrNoCurrentRecord);
    EXPECT_EQ(Raised([&] { rows->MoveNext(); }), adErrNoCurrentRecord);
    rows->Close();
    EXPECT_EQ(Raised([&] { rows->GetEOF(); }), adErrObjectClosed);
}

TEST_F(AdoLayer, AFailedMoveIsFinal) {
    fake.failingMove = 2;
    const auto connection = Create<_Connection>(u"ADODB.Connection");
    const auto rows = Create<_Recordset>(u"ADODB.Recordset");
    ASSERT_EQ(Open(connection, Book(strBook)), 0);
    ASSERT_EQ(Open(rows, connection, all), 0);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Raised([&] { rows->MoveNext(); }), E_FAIL);
        EXPECT_EQ(Raised([&] { rows->GetEOF(); }), E_FAIL);
        EXPECT_EQ(Raised([&] { rows->GetFields()->GetItem(Index(0).Value())->GetValue(); }), E_FAIL);
    }
    rows->Close();
    fake.failingMove = 1;
    EXPECT_EQ(Open(rows, connection, all), E_FAIL);
    fake.failingMove = 0;
    EXPECT_EQ(Open(rows, connection, all), 0);
}

TEST_F(AdoLayer, TheFileDecidesWhoOpensItAndTheStringWhatIsExpected) {
    const auto jet = "\0\1\0\0Standard Jet DB\0"s;
    const auto ace = "\0\1\0\0Standard ACE DB\0"s;
    const auto sealed =
        CompoundFile({u"DataSpaces/Version", u"DataSpaceMap", u"EncryptionInfo", u"EncryptedPackage"});
    // Its directory, two sectors long, lies behind what 109 sectors of the allocation table tell of.
    const auto large = CCompoundBuilder()
                           .Add(u"DataSpaces/Version", "")
                           .Add(u"EncryptionInfo", Noise(110 * 128 * 512))
                           .Add(u"EncryptedPackage", "")
                           .Finish();
    constexpr int none = -1;
    const struct {
        const char* title;
        std::string content;
        const char* properties;
        int format;
        HRESULT hr = 0;
    } cases[] = {
        {"xlsx", zip, "Excel 12.0;HDR=NO;IMEX=1", 0},
        {"xlsx as the old kind", zip, "excel 8.0", 0},
        {"empty zip", "PK\x05\x06", "Excel 12.0 Xml", 0},
        {"xls", CompoundFile({u"Workbook"}).bytes, "Excel 12.0", 1},
        {"record stream", "\x09\x08\x08\x00\x00\x05"s, "Excel 8.0", 1},
        {"encrypted workbook", sealed.bytes, "Excel 12.0", 0},
        {"encrypted workbook with its directory far behind", large.bytes, "Excel 12.0", 0},
        {"cut compound file", sealed.bytes.substr(0, sealed.entries.at(u"EncryptedPackage")), "Excel 12.0", none,
         E_FAIL},
        {"database", jet, "", 2},
        {"newer database", ace, "  ", 2},
        {"database as workbook", jet, "Excel 8.0", none, E_FAIL},
        {"workbook as database", zip, "", none, E_FAIL},
        {"another kind", zip, "text;HDR=NO", none, E_FAIL},
        {"text", "a,b\r\n", "Excel 12.0", none, E_FAIL},
        {"empty", "", "", none, E_FAIL},
    };
    for (const auto& c : cases) {
        const std::string path = folder.WriteFile("file", c.content);
        const SConnectionString text{"microsoft.jet.oledb.4.0", path, c.properties, "pw"};
        EXPECT_EQ(Raised([&] { OpenDataSource(text); }), c.hr) << c.title;
        if (c.format != none) {
            EXPECT_EQ(static_cast<int>(fake.format), c.format) << c.title;
            EXPECT_EQ(fake.options.strPath, path);
            EXPECT_EQ(fake.options.strPassWord, "pw");
            EXPECT_EQ(fake.options.bHeaderRow, std::string(c.properties).find("HDR=NO") == std::string::npos);
        }
    }
}

TEST_F(AdoLayer, SourcesThatCannotBeOpenedSayWhatAndWhere) {
    const std::string ace = "Microsoft.ACE.OLEDB.12.0";
    const std::string compound = folder.WriteFile("x", CompoundFile({u"Workbook"}).bytes);
    const struct {
        std::string provider;
        std::string path;
        HRESULT hr;
        const char* described;
    } cases[] = {
        {"", strBook, adErrProviderNotFound, "names no provider"},
        {"SQLOLEDB", strBook, adErrProviderNotFound, "SQLOLEDB"},
        {ace, "", E_FAIL, "no file"},
        {ace, "/no/such", E_FAIL, "/no/such: the file cannot be opened (error 3)"},
        {ace, folder.Path(), E_FAIL, "cannot be opened"},
        {ace, compound, adErrProviderNotFound, "not read xls files"},
    };
    const auto xls = SetProvider(ESourceFormat::Xls, nullptr);
    for (const auto& c : cases) {
        try {
            OpenDataSource({c.provider, c.path, "Excel 8.0", ""});
            ADD_FAILURE() << c.described;
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), c.hr) << c.described;
            EXPECT_NE(std::string(error.Description()).find(c.described), std::string::npos) << error.Description();
        }
    }
    SetProvider(ESourceFormat::Xls, xls);
}

TEST_F(AdoLayer, HostilePathsAreReadThroughTheWholeLibrary) {
    const std::string seam = ";Extended Properties=\"Excel 12.0;HDR=NO;IMEX=1\";Jet OLEDB:Database Password=";
    for (const std::string& name : {"a.xlsx;b=c.xlsx"s, "a.xlsx" + seam + ";.xlsx", "'q' \"r\".xlsx"s, " ;.xlsx"s}) {
        const std::string path = folder.WriteFile(name, zip);
        CSourceDataInfo info;
        ASSERT_TRUE(info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_UNKNOWN));
        ASSERT_EQ(info.PrepareReadSourceData(false), CSourceDataInfo::SDO_DATABASE) << name;
        EXPECT_EQ(fake.options.strPath, path);
        EXPECT_FALSE(fake.options.bHeaderRow);
        ASSERT_TRUE(info.SetSelectSchemaIndx(0));
        CDataAccess access(2, 50, 10, &info);
        ASSERT_TRUE(access.FileOpen());
        const char** data = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        ASSERT_TRUE(access.GetLineData(data, lengths, count));
        EXPECT_STREQ(data[1], "11");
    }
    // Bytes that the code page does not define never lead to the file that their stand-in names.
    SetAnsiCodePage(CP_UTF8);
    folder.WriteFile("\xEF\xBF\xBD.xlsx", zip);
    CSourceDataInfo info;
    info.SetCommonInfo(folder.Path("\xFF.xlsx").c_str(), SCDeclareConstant::SFT_UNKNOWN);
    EXPECT_EQ(info.PrepareReadSourceData(false), CSourceDataInfo::SDO_PASSWORD_ERROR);
    SetAnsiCodePage(932);
    for (const HRESULT hr : {E_FAIL, DB_SEC_E_AUTH_FAILED}) {
        fake.openFails = hr;
        info.SetCommonInfo(strBook.c_str(), SCDeclareConstant::SFT_UNKNOWN);
        EXPECT_EQ(info.PrepareReadSourceData(false),
                  hr == E_FAIL ? CSourceDataInfo::SDO_PASSWORD_ERROR : CSourceDataInfo::SDO_ACCESS_DENIED);
    }
}

} // namespace
