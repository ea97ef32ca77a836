#include "CADOOperater.h"
#include "CSourceDataInfo.h"
#include "ado/ScriptedAdo.h"
#include "tqcAccess/CodePage.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using namespace NSTQ::Platform;
using namespace NSTQ::Tests;
using Info = CSourceDataInfo;

constexpr const char* connection = "Provider=x;Data Source=y";

/// What the two listing calls give.
struct Listing {
    using Texts = std::vector<std::string>;
    DWORD size = 77;
    DWORD count = 77;
    DWORD written = 77; ///< the count of the names call
    std::vector<char> names;
    Texts texts;

    void Size() { EXPECT_TRUE(CADOOperater::GetSchemaNameSize(size, count, connection)); }
    /// Asks for the names in exactly the room that was told, so that a byte too many is seen.
    void Names() {
        names.assign(size, 'x');
        std::vector<char*> starts(count);
        std::vector<WORD> lengths(count);
        EXPECT_TRUE(CADOOperater::GetSchemaName(starts.data(), lengths.data(), names.data(), written, connection));
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

class Sources : public testing::Test {
protected:
    ~Sources() override {
        EXPECT_EQ(script.liveObjects, 0);
        EXPECT_EQ(GetComInitCount(), 0U);
        SetAnsiCodePage(932);
    }
    Info::ESourceDataOpen Prepare(Info& info, const char* path, bool is2007 = false) {
        EXPECT_TRUE(info.SetCommonInfo(path, SCDeclareConstant::SFT_UNKNOWN));
        return info.PrepareReadSourceData(is2007);
    }
    static std::vector<std::string> Names(const Info& info) {
        std::vector<char*> names;
        const bool listed = info.GetSchemaName(names);
        EXPECT_EQ(listed, !names.empty());
        return {names.begin(), names.end()};
    }
    CScript script;
};

TEST_F(Sources, ListsTablesAndViewsInTheirOrder) {
    script.SetSchema({{u"Sheet1$", u"TABLE"}, {u"sys", u"SYSTEM TABLE"}, {u"Data$", u"TABLE"}, {u"low", u"table"}});
    CComApartment apartment;
    Listing listing;
    EXPECT_EQ(listing.List(), (Listing::Texts{"Sheet1$", "Data$"}));
    EXPECT_EQ(listing.count, 2U);
    EXPECT_EQ(std::string(listing.names.begin(), listing.names.end()), std::string("Sheet1$\0Data$", 14));
    EXPECT_EQ(GetComInitCount(), 1U);
    script.schema.rows = {{u"\u3042", u"VIEW"}, {1.5, u"TABLE"}, {u"x", 12.0}};
    EXPECT_EQ(listing.List(), (Listing::Texts{"\x82\xA0", "1.5"}));
    script.SetSchema({{u"x", u"SYNONYM"}});
    EXPECT_EQ(listing.List(), Listing::Texts{});
    EXPECT_EQ(listing.size + listing.count, 0U);
}

TEST_F(Sources, EachFailureOfAListingIsRaised) {
    script.SetSchema({{u"one", u"TABLE"}, {u"three", u"VIEW"}});
    constexpr HRESULT hr = MakeHresult(0x80041234);
    Listing told;
    told.Size();
    const struct {
        const char* op;
        int nth;
        DWORD size;  ///< that the size call leaves, from 77
        DWORD named; ///< the count that the names call leaves, from 77
    } cases[] = {
        {"ConnectionOpen", 1, 77, 77}, {"OpenSchema", 1, 77, 77},    {"GetEOF", 1, 0, 77},
        {"GetFields", 2, 0, 77},       {"GetItem", 3, 4, 77},        {"GetValue", 4, 4, 77},
        {"MoveNext", 2, 10, 77},       {"RecordsetClose", 1, 10, 2}, {"ConnectionClose", 1, 10, 2},
    };
    for (const auto& c : cases) {
        Listing listing;
        script.FailAt(c.op, hr, c.nth);
        EXPECT_EQ(Raised([&] { listing.Size(); }), hr);
        EXPECT_EQ(listing.size, c.size) << c.op;
        EXPECT_EQ(GetComInitCount(), 0U);
        listing = told;
        script.FailAt(c.op, hr, c.nth);
        EXPECT_EQ(Raised([&] { listing.Names(); }), hr);
        EXPECT_EQ(listing.written, c.named) << c.op;
        EXPECT_EQ(script.liveObjects, 0);
        EXPECT_EQ(GetComInitCount(), 0U);
    }
    Listing listing;
    script.schema.rows = {{Null{}, u"TABLE"}};
    EXPECT_EQ(Raised([&] { listing.Size(); }), DISP_E_TYPEMISMATCH);
    for (const char* missing : {"Connection", "Fields", "Field"}) {
        script.missing = missing;
        EXPECT_EQ(Raised([&] { listing.Size(); }), E_POINTER);
    }
    script.missing = {};
    SetAnsiCodePage(65001);
    EXPECT_EQ(Raised([&] { CADOOperater::GetSchemaNameSize(listing.size, listing.count, "Data Source=\xFF"); }),
              E_FAIL);
}

TEST_F(Sources, ASourceThatGrewBetweenTheCallsIsNotWrittenPastItsRoom) {
    Listing listing;
    const std::vector<std::u16string> grown[] = {
        {u"one", u"three", u""}, {u"a", u"b", u"c"}, {u"one", u"three!"}, {std::u16string(70000, u'x')}};
    for (const auto& names : grown) {
        script.SetTables({u"one", u"three"});
        listing.Size();
        script.SetTables(names);
        EXPECT_EQ(Raised([&] { listing.Names(); }), DB_E_DATAOVERFLOW);
    }
    // Room that was told for one source says nothing of another.
    script.SetTables({});
    DWORD size = 0, count = 0;
    CADOOperater::GetSchemaNameSize(size, count, "another");
    script.SetTables({u"x"});
    listing.Names();
    EXPECT_EQ(listing.texts, (std::vector<std::string>{"x"}));
}

TEST_F(Sources, StringsNameProviderPathAndProperties) {
    const std::string jet = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
    const std::string ace = "Provider=Microsoft.ACE.OLEDB.12.0;Data Source=";
    const std::string excel8 = ";Extended Properties=\"Excel 8.0;HDR=NO;IMEX=1\"";
    const std::string excel12 = ";Extended Properties=\"Excel 12.0;HDR=NO;IMEX=1\"";
    const std::string access = ";Extended Properties=\"\"";
    const std::string longest = "/" + std::string(254, 'p') + ".xlsx";
    const struct {
        std::string path;
        bool is2007;
        std::string before;
        std::string after;
        const char* statement;
    } cases[] = {
        {"/no/book.xls", false, jet, excel8, "SELECT * FROM [My 'S$]"},
        {"/no/book.xls", true, ace, excel12, "SELECT * FROM [My 'S$]"},
        {"/no/book.xlsx", false, ace, excel12, "SELECT * FROM [My 'S$]"},
        {"/no/data.mdb", false, jet, access, "SELECT * FROM ['My 'S$']"},
        {"/no/data.mdb", true, ace, access, "SELECT * FROM ['My 'S$']"},
        {"/no/a\"b;c=d.accdb", true, ace, access, "SELECT * FROM ['My 'S$']"},
        {longest, true, ace, excel12, "SELECT * FROM [My 'S$]"},
    };
    script.SetTables({u"'My 'S$'"});
    for (const auto& c : cases) {
        Info info;
        EXPECT_EQ(Prepare(info, c.path.c_str(), c.is2007), Info::SDO_DATABASE);
        const char* text = nullptr;
        EXPECT_FALSE(info.GetRecordSetString(text));
        ASSERT_TRUE(info.GetConnectString(text));
        EXPECT_EQ(text, c.before + c.path + c.after + ";Jet OLEDB:Database Password=;");
        EXPECT_TRUE(info.SetSelectSchemaIndx(0));
        ASSERT_TRUE(info.GetRecordSetString(text));
        EXPECT_STREQ(text, c.statement);
        const std::unique_ptr<Info> clone(info.CreateClone());
        EXPECT_EQ(Names(*clone), Names(info));
        info.SetCommonInfo("/no/a.csv", SCDeclareConstant::SFT_UNKNOWN);
        text = nullptr;
        EXPECT_FALSE(info.GetConnectString(text) || info.GetRecordSetString(text) || text != nullptr);
    }
    script.SetTables({std::u16string(300, u'n')});
    Info info;
    Prepare(info, "/no/data.mdb");
    EXPECT_TRUE(info.SetSelectSchemaIndx(0));
    const char* text = nullptr;
    ASSERT_TRUE(info.GetRecordSetString(text));
    EXPECT_EQ(text, "SELECT * FROM [" + std::string(240, 'n'));
}

TEST_F(Sources, OffersWorksheetsAndAllTables) {
    script.SetTables(
        {u"Sheet1$", u"'My Sheet$'", u"Print_Area", u"Sheet1$Print_Area", u"$", u"'$'", u"", u"'It''s a.b!c$'"});
    Info book;
    EXPECT_EQ(Prepare(book, "/no/b.xlsx"), Info::SDO_DATABASE);
    EXPECT_EQ(Names(book), (std::vector<std::string>{"Sheet1", "My Sheet", "", "It''s a.b!c"}));
    char name[20] = "?";
    EXPECT_TRUE(book.SetSelectSchemaIndx(1));
    EXPECT_FALSE(book.SetSelectSchemaIndx(4));
    EXPECT_TRUE(book.GetSchemaName(name));
    EXPECT_STREQ(name, "My Sheet");
    const char* text = nullptr;
    EXPECT_TRUE(book.GetRecordSetString(text));
    EXPECT_STREQ(text, "SELECT * FROM [My Sheet$]");

    Info data;
    Prepare(data, "/no/d.accdb");
    EXPECT_EQ(Names(data).size(), 8U);

    // A new listing takes the place of the old one; the index stays and points nowhere.
    script.SetTables({u"Range"});
    EXPECT_EQ(book.PrepareReadSourceData(false), Info::SDO_DATABASE);
    EXPECT_TRUE(Names(book).empty());
    EXPECT_FALSE(book.SetSelectSchemaIndx(0));
    std::strcpy(name, "?");
    EXPECT_FALSE(book.GetSchemaName(name));
    EXPECT_STREQ(name, "?");
    EXPECT_FALSE(book.GetRecordSetString(text));
}

TEST_F(Sources, FailuresOfTheListingBecomeResults) {
    constexpr HRESULT other = MakeHresult(0x80041234);
    const struct {
        const char* path;
        HRESULT hr;
        Info::ESourceDataOpen result;
        bool asks;
    } cases[] = {
        {"/no/a.mdb", DB_SEC_E_AUTH_FAILED, Info::SDO_PASSWORD_ERROR, true},
        {"/no/a.accdb", DB_SEC_E_AUTH_FAILED, Info::SDO_PASSWORD_ERROR, true},
        {"/no/a.xls", E_FAIL, Info::SDO_PASSWORD_ERROR, false},
        {"/no/a.xlsx", E_FAIL, Info::SDO_PASSWORD_ERROR, false},
        {"/no/a.xlsx", DB_SEC_E_AUTH_FAILED, Info::SDO_ACCESS_DENIED, true},
        {"/no/a.mdb", E_FAIL, Info::SDO_ACCESS_DENIED, true},
        {"/no/a.accdb", other, Info::SDO_ACCESS_DENIED, true},
        {"/no/a.xls", E_OUTOFMEMORY, Info::SDO_ACCESS_DENIED, true},
    };
    for (const auto& c : cases) {
        for (const int nth : {1, 2}) {
            Info info;
            script.FailAt("ConnectionOpen", c.hr, nth);
            EXPECT_EQ(Prepare(info, c.path), c.result) << c.path;
            EXPECT_EQ(info.GetIsNeedPassWord(), c.asks) << c.path;
            const char* text = nullptr;
            EXPECT_TRUE(info.GetConnectString(text));
            EXPECT_FALSE(info.GetRecordSetString(text));
            EXPECT_FALSE(info.SetSelectSchemaIndx(0));
            EXPECT_EQ(info.PrepareReadSourceData(false), Info::SDO_DATABASE);
            EXPECT_EQ(info.GetIsNeedPassWord(), c.asks);
        }
    }
}

TEST_F(Sources, AListingThatBreaksOffLeavesTheOldNamesUsable) {
    Info info;
    script.SetTables({u"a"});
    ASSERT_EQ(Prepare(info, "/no/d.mdb"), Info::SDO_DATABASE);
    script.SetTables({u"a much longer name"});
    script.FailAt("MoveNext", E_FAIL);
    EXPECT_EQ(info.PrepareReadSourceData(false), Info::SDO_ACCESS_DENIED);
    const std::unique_ptr<Info> clone(info.CreateClone());
    EXPECT_EQ(Names(*clone), (std::vector<std::string>{"a"}));
}

} // namespace
