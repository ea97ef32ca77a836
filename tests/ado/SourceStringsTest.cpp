#include "CADOOperater.h"
#include "CSourceDataInfo.h"
#include "ado/ScriptedSource.h"

#include <gtest/gtest.h>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using namespace NSTQ::Platform;
using namespace NSTQ::Tests;
using Info = CSourceDataInfo;

/// The results of the two listing calls.
struct Listing {
    using Texts = std::vector<std::string>;
    std::string connection;
    DWORD size = 77, count = 77, written = 77; ///< `written` is the count of the names call
    std::vector<char> names = {};
    Texts texts = {};

    void Size() { EXPECT_TRUE(CADOOperater::GetSchemaNameSize(size, count, connection.c_str())); }
    /// The buffer has exactly the size of the first call, so that the sanitizers find a byte too many.
    void Names() {
        names.assign(size, 'x');
        std::vector<char*> starts(count);
        std::vector<WORD> lengths(count);
        EXPECT_TRUE(
            CADOOperater::GetSchemaName(starts.data(), lengths.data(), names.data(), written, connection.c_str()));
        texts.clear();
        for (DWORD i = 0; i < written; ++i)
            texts.emplace_back(starts[i], lengths[i]);
        EXPECT_TRUE(starts.empty() || starts[0] == names.data());
    }
    const Texts& List() {
        Size();
        Names();
        return texts;
    }
};

class Sources : public CScriptedTest {
protected:
    static std::vector<std::string> Names(const Info& info) {
        std::vector<char*> names;
        const bool listed = info.GetSchemaName(names);
        EXPECT_EQ(listed, !names.empty());
        return {names.begin(), names.end()};
    }
    Listing listing{"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + script.File("a.mdb")};
};

TEST_F(Sources, ListsTablesAndViewsInTheirOrder) {
    script.schema = {{u"Sheet1$", u"TABLE"}, {u"sys", u"SYSTEM TABLE"}, {u"\u3042", u"VIEW"}, {u"low", u"table"}};
    EXPECT_EQ(listing.List(), (Listing::Texts{"Sheet1$", "\x82\xA0"}));
    EXPECT_EQ(std::string(listing.names.begin(), listing.names.end()), std::string("Sheet1$\0\x82\xA0", 11));
}

TEST_F(Sources, EachFailureOfAListingIsRaised) {
    constexpr HRESULT hr = MakeHresult(0x80041234);
    listing.Size();
    for (const char* op : {"Open", "ListTables"}) {
        Listing other{listing.connection};
        script.FailAt(op, hr);
        EXPECT_EQ(Raised([&] { other.Size(); }), hr);
        script.FailAt(op, hr);
        EXPECT_EQ(Raised([&] { listing.Names(); }), hr);
        EXPECT_EQ(other.size + other.count + listing.written, 3 * 77U) << "they are unchanged";
        EXPECT_EQ(script.liveObjects + static_cast<int>(GetComInitCount()), 0);
    }
    SetAnsiCodePage(65001);
    listing.connection = "Data Source=\xFF";
    EXPECT_EQ(Raised([&] { listing.Size(); }), E_FAIL);
    const CClassRegistration none(u"ADODB.Connection", [] { return CComPtr<IUnknown>(); });
    EXPECT_EQ(Raised([&] { listing.Size(); }), E_POINTER);
}

TEST_F(Sources, NamesThatGrewBetweenTheCallsAreNotWrittenPastTheBuffer) {
    const std::vector<std::u16string> grown[] = {{u"a", u"b", u"c"}, {u"one", u"three!"}};
    for (const auto& names : grown) {
        script.SetTables({u"one", u"three"});
        listing.Size();
        script.SetTables(names);
        EXPECT_EQ(Raised([&] { listing.Names(); }), DB_E_DATAOVERFLOW);
    }
}

TEST_F(Sources, StringsHaveProviderPathAndPropertiesAndOpenTheFile) {
    const std::string jet = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
    const std::string ace = "Provider=Microsoft.ACE.OLEDB.12.0;Data Source=";
    const std::string excel8 = ";Extended Properties=\"Excel 8.0;HDR=NO;IMEX=1\"";
    const std::string excel12 = ";Extended Properties=\"Excel 12.0;HDR=NO;IMEX=1\"";
    const std::string access = ";Extended Properties=\"\"";
    const std::string passWord = ";Jet OLEDB:Database Password=";
    const std::tuple<std::string, bool, std::string, std::string> cases[] = {
        {"book.xls", false, jet, excel8},
        {"book.xls", true, ace, excel12},
        {"book.xlsx", false, ace, excel12},
        {"data.mdb", false, jet, access},
        {"data.mdb", true, ace, access},
        {"a\"b;c=d.accdb", true, ace, access},
        {"a.xlsx" + excel12 + passWord + ";.xlsx", true, ace, excel12},
        {std::string(260 - script.folder.Path("p.xlsx").size(), '/') + "p.xlsx", true, ace, excel12},
    };
    script.SetTables({u"'My 'S$'"});
    for (const auto& [name, is2007, before, after] : cases) {
        Info info;
        EXPECT_EQ(Prepare(info, name, is2007), Info::SDO_DATABASE);
        const std::string path = script.folder.Path(name);
        EXPECT_EQ(script.options.path, path);
        EXPECT_FALSE(script.options.hasHeaderRow && after != access);
        const char* text = nullptr;
        EXPECT_FALSE(info.GetRecordSetString(text));
        ASSERT_TRUE(info.GetConnectString(text));
        EXPECT_EQ(text, before + path + after + passWord + ";");
        EXPECT_TRUE(info.SetSelectSchemaIndx(0));
        ASSERT_TRUE(info.GetRecordSetString(text));
        EXPECT_STREQ(text, after == access ? "SELECT * FROM ['My 'S$']" : "SELECT * FROM [My 'S$]");
        info.SetCommonInfo("/no/a.csv", SCDeclareConstant::SFT_UNKNOWN);
        text = nullptr;
        EXPECT_FALSE(info.GetConnectString(text) || info.GetRecordSetString(text) || text != nullptr);
    }
    script.SetTables({std::u16string(300, u'n')});
    Info info;
    Prepare(info, "data.mdb");
    const char* text = nullptr;
    ASSERT_TRUE(info.SetSelectSchemaIndx(0) && info.GetRecordSetString(text));
    EXPECT_EQ(text, "SELECT * FROM [" + std::string(240, 'n'));
    // Invalid bytes do not open the file that is named with replacement characters.
    SetAnsiCodePage(CP_UTF8);
    script.File("\xEF\xBF\xBD.xlsx");
    EXPECT_EQ(Prepare(info, "\xFF.xlsx"), Info::SDO_PASSWORD_ERROR);
}

TEST_F(Sources, ListsWorksheetsOfWorkbooksAndAllTablesOfDatabases) {
    script.SetTables(
        {u"Sheet1$", u"'My Sheet$'", u"Print_Area", u"Sheet1$Print_Area", u"$", u"'$'", u"", u"'It''s a.b!c$'"});
    Info book;
    EXPECT_EQ(Prepare(book, "b.xlsx"), Info::SDO_DATABASE);
    EXPECT_EQ(Names(book), (std::vector<std::string>{"Sheet1", "My Sheet", "", "It''s a.b!c"}));
    char name[20];
    EXPECT_TRUE(book.SetSelectSchemaIndx(1));
    EXPECT_FALSE(book.SetSelectSchemaIndx(4));
    EXPECT_TRUE(book.GetSchemaName(name));
    EXPECT_STREQ(name, "My Sheet");
    Info data;
    Prepare(data, "d.accdb");
    EXPECT_EQ(Names(data).size(), 8U);

    // A new listing replaces the old one; the selected index is then out of range.
    script.SetTables({u"Range"});
    EXPECT_EQ(book.PrepareReadSourceData(false), Info::SDO_DATABASE);
    EXPECT_TRUE(Names(book).empty());
    EXPECT_FALSE(book.SetSelectSchemaIndx(0) || book.GetSchemaName(name));
}

TEST_F(Sources, FailuresOfTheListingBecomeResults) {
    const std::tuple<const char*, HRESULT, Info::ESourceDataOpen, bool> cases[] = {
        {"a.accdb", DB_SEC_E_AUTH_FAILED, Info::SDO_PASSWORD_ERROR, true},
        {"a.xls", E_FAIL, Info::SDO_PASSWORD_ERROR, false},
        {"a.xlsx", DB_SEC_E_AUTH_FAILED, Info::SDO_ACCESS_DENIED, true},
        {"a.mdb", E_FAIL, Info::SDO_ACCESS_DENIED, true},
        {"a.xls", E_OUTOFMEMORY, Info::SDO_ACCESS_DENIED, true},
    };
    for (const auto& [name, hr, result, asks] : cases) {
        for (const int nth : {1, 2}) {
            Info info;
            script.FailAt("Open", hr, nth);
            EXPECT_EQ(Prepare(info, name), result) << name;
            EXPECT_EQ(info.GetIsNeedPassWord(), asks) << name;
            const char* text = nullptr;
            EXPECT_TRUE(info.GetConnectString(text));
            EXPECT_FALSE(info.GetRecordSetString(text) || info.SetSelectSchemaIndx(0));
            EXPECT_EQ(info.PrepareReadSourceData(false), Info::SDO_DATABASE);
            EXPECT_EQ(info.GetIsNeedPassWord(), asks);
        }
    }
}

} // namespace
