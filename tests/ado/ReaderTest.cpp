#include "CADOOperater.h"
#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "ado/ScriptedSource.h"
#include "support/Faults.h"

#include <gtest/gtest.h>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using namespace NSTQ::Platform;
using namespace NSTQ::Tests;

using Row = std::vector<std::string>;

/// What a call returns.
struct Returned {
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 77;

    bool IsUntouched() const { return data == nullptr && lengths == nullptr && count == 77; }
    Row Texts(std::size_t countedNul = 0) const {
        Row row;
        for (DWORD i = 0; i < count; ++i) {
            row.emplace_back(data[i], lengths[i] - countedNul);
            EXPECT_EQ(data[i][row.back().size()], '\0');
            EXPECT_EQ(data[i], i == 0 ? data[0] : data[i - 1] + row[i - 1].size() + 1);
        }
        return row;
    }
};

/// A reader that has opened the first sheet of the script.
struct Opened {
    CADOOperater reader;
    Returned row, names;

    explicit Opened(CSourceDataInfo& info, DWORD columns = 2, DWORD line = 99, DWORD field = 20,
                    bool keepLineEnds = false)
        : reader(columns, line, field) {
        info.SetKeepLineEnds(keepLineEnds);
        EXPECT_TRUE(reader.FileOpen(&info));
    }
    HRESULT Read() {
        return Raised([&] { EXPECT_TRUE(reader.GetLineData(row.data, row.lengths, row.count)); });
    }
    HRESULT ReadNames() {
        return Raised([&] { EXPECT_TRUE(reader.GetFieldsName(names.data, names.lengths, names.count)); });
    }
};

class Reader : public CScriptedTest {
protected:
    Reader() {
        EXPECT_EQ(Prepare(info, "book.xlsx"), CSourceDataInfo::SDO_DATABASE);
        info.SetSelectSchemaIndx(0);
    }
    CSourceDataInfo info;
};

TEST_F(Reader, ReadsRowsOnceAndTellsItsPosition) {
    script.table = {{u"ID", u" Na me "}, {{1.0, u"one"}, {2.0, Value(VT_NULL)}, {7.5, Date(45000.75)}}};
    script.table.types[0] = {EDataType::adNumeric, 18, 4, 0};
    script.table.types[1].definedSize = 40;
    CADOOperater reader(2, 99, 20);
    Returned row;
    const SFieldType* types = nullptr;
    DWORD typeCount = 77;
    EXPECT_TRUE(reader.GetFieldsType(types, typeCount) && typeCount == 0);
    EXPECT_TRUE(reader.GetFieldsName(row.data, row.lengths, row.count) && row.count == 0);
    EXPECT_EQ(Raised([&] { reader.GetLineData(row.data, row.lengths, row.count); }), adErrObjectClosed);
    info.SetReadAhead(true);
    ASSERT_TRUE(reader.FileOpen(&info));
    EXPECT_TRUE(script.tableName == u"Sheet1$" && script.options.readsAhead);
    EXPECT_EQ(reader.GetMaxRowNum(), 3U);
    ASSERT_TRUE(reader.GetFieldsName(row.data, row.lengths, row.count));
    EXPECT_EQ(row.Texts(1), (Row{"ID", " Na me"}));

    const Row rows[] = {{"1", "one"}, {"2", ""}, {"7.5", "2023/03/15 18:00:00"}};
    const int positions[] = {333, 666, 1000};
    EXPECT_EQ(reader.GetReadPosition(), 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(reader.HasNextLineData());
        ASSERT_TRUE(reader.GetLineData(row.data, row.lengths, row.count));
        EXPECT_EQ(row.Texts(), rows[i]);
        Returned other;
        EXPECT_TRUE(reader.GetFieldsType(types, typeCount));
        EXPECT_EQ(std::vector(types, types + typeCount), script.table.types);
        EXPECT_FALSE(reader.MoveFileBegin() || reader.MoveFileEnd());
        for (const DWORD line : {0U, 1U, 0xFFFFFFFFU})
            EXPECT_FALSE(reader.GetSpecificLineData(line, other.data, other.lengths, other.count));
        EXPECT_TRUE(other.IsUntouched());
        EXPECT_EQ(reader.GetReadPosition(), positions[i]);
    }
    EXPECT_FALSE(reader.HasNextLineData());
    row = {};
    EXPECT_FALSE(reader.GetLineData(row.data, row.lengths, row.count) || !row.IsUntouched());
    EXPECT_TRUE(reader.FileClose() && script.liveObjects == 0);
    EXPECT_FALSE(reader.FileClose());
    EXPECT_EQ(reader.GetReadPosition(), 1000);
}

TEST_F(Reader, ReadPositionDoesNotOverflowAndAnUnknownCountIsZero) {
    script.table.rows = {{1.0, 2.0}, {1.0, 2.0}};
    for (const auto& [count, max] : {std::pair<std::int64_t, DWORD>{0xFFFFFFFF, 0xFFFFFFFF}, {-1, 0}, {0, 0}}) {
        script.recordCount = count;
        Opened opened(info);
        EXPECT_TRUE(opened.Read() == 0 && opened.reader.GetReadPosition() == 0);
        EXPECT_EQ(opened.reader.GetMaxRowNum(), max);
    }
}

TEST_F(Reader, DescriptionsWithoutStringsOpenNothing) {
    CADOOperater reader(2, 99, 20);
    const int opened = script.calls["Open"];
    CSourceDataInfo other;
    other.SetCommonInfo(script.File("a.xlsx").c_str(), SCDeclareConstant::SFT_UNKNOWN);
    EXPECT_FALSE(reader.FileOpen(nullptr) || reader.FileOpen(&other) || script.calls["Open"] != opened);
    // Without a selected sheet the connection is open, but not the record set.
    other.PrepareReadSourceData(false);
    EXPECT_FALSE(reader.FileOpen(&other) || reader.GetErrorRet() != 0 || reader.FileClose());
    EXPECT_EQ(script.liveObjects, 1);
}

void ExpectNotOpened(const CSourceDataInfo& info, HRESULT code) {
    CADOOperater reader(2, 99, 20);
    EXPECT_FALSE(reader.FileOpen(&info));
    EXPECT_EQ(reader.GetErrorRet(), code);
    EXPECT_EQ(reader.GetErrorCode(), 0U);
    EXPECT_STRNE(reader.GetErrorDescription(), "");
    EXPECT_FALSE(reader.MoveFileBegin());
    EXPECT_STREQ(reader.GetErrorDescription(), "") << "it is that of the last call";
}

TEST_F(Reader, EachFailureIsReportedByTheCallThatMeetsIt) {
    script.table.rows = {{1.0, u"x"}, {2.0, u"y"}};
    constexpr HRESULT hr = MakeHresult(0x80041234);
    for (const char* op : {"Open", "OpenTable", "MoveNext", "GetRowCount"}) {
        SCOPED_TRACE(op);
        script.FailAt(op, hr);
        ExpectNotOpened(info, op == std::string("GetRowCount") ? 0 : hr);
    }
    for (const char* op : {"GetValue", "MoveNext"}) {
        Opened opened(info);
        script.FailAt(op, hr);
        EXPECT_EQ(opened.Read(), hr) << op;
        EXPECT_TRUE(opened.row.IsUntouched());
        EXPECT_EQ(opened.reader.GetReadPosition(), 0);
    }
    {
        Opened opened(info);
        script.FailAt("GetColumnNames", hr);
        EXPECT_EQ(opened.ReadNames(), hr);
        EXPECT_EQ(opened.Read(), 0);
    }
    {
        const auto none = [] { return CComPtr<IUnknown>(); };
        const CClassRegistration noConnection(u"ADODB.Connection", none);
        ExpectNotOpened(info, 0);
        const CClassRegistration noRecordset(u"ADODB.Recordset", none);
        EXPECT_EQ(Raised([&] { CDataAccess facade(2, 99, 20, &info); }), E_POINTER);
    }
    CDataAccess facade(2, 99, 20, &info);
    EXPECT_TRUE(facade.FileOpen());
    Returned row;
    script.FailAt("MoveNext", E_FAIL);
    EXPECT_EQ(Raised([&] { facade.GetLineData(row.data, row.lengths, row.count); }), E_FAIL);
    EXPECT_EQ(Raised([&] { facade.HasNextLineData(); }), E_FAIL);
}

TEST_F(Reader, ValuesBecomeCleanedAndTruncatedTexts) {
    using namespace std::string_literals;
    const struct {
        Cell value;
        DWORD limit;
        std::string text;
        unsigned page = 932;
        bool isCut = false;
        std::string kept = text; ///< with line ends kept
        bool isKeptCut = isCut;
    } cases[] = {
        {Value(VT_NULL), 10, ""},
        {u"", 10, ""},
        {u"  ab  ", 10, "ab"},
        {u"a\tb", 10, "a b"},
        {u"ab  \t", 10, "ab   "},
        {u"ab \r ", 10, "ab", 932, false, "ab \r"},
        {u"   ", 10, ""},
        {u"\u0001\u001F", 10, ""},
        {u"\t\n x\t", 10, "x ", 932, false, "\n x "},
        {u" \u0001\t      x\u0001y", 10, "x", 932, true, "xy", false},
        {u" \t                    x", 10, "", 932, true, "x", false},
        {u"x\u0001                    ", 10, "x"},
        {u"x                     \n", 10, "x", 932, false, "x", true},
        {u"12345678\r\n", 9, "12345678", 932, false, "12345678\r", true},
        {u"123456789abc\tdefghijk\rl        ", 99, "123456789abc defghijkl", 932, false, "123456789abc defghijk\rl"},
        {u"\u3042\u3042\n\u3042\u3042", 10, "\x82\xA0\x82\xA0\x82\xA0\x82\xA0", 932, false,
         "\x82\xA0\x82\xA0\n\x82\xA0\x82\xA0"},
        {std::u16string(u"a\0b", 3), 10, "ab"},
        {u"12345678  345", 10, "12345678", 932, true},
        {u"  345678901234", 10, "34567890", 932, true, "3456789012"},
        {u"123456789\u3042", 10, "123456789", 932, true},
        {u"12345678\u3042x", 10, "12345678\x82\xA0", 932, true},
        {u"\u3042", 0, "", 932, true},
        {u"\uFF3C\u8868", 10, "\x81\x5F\x95\x5C"},
        {u"a\u00E9\U0001F600", 10, "ae??"},
        {u"\u00E9\u0E01", 10, "\xE9?", 1252},
        {u"ab\u00E9", 3, "ab", 65001, true},
        {u"a\U0001F600", 5, "a\xF0\x9F\x98\x80", 65001},
        {-1234567.25, 4, "-123", 932, true},
    };
    for (const auto& c : cases) {
        SetAnsiCodePage(c.page);
        script.table = {{u"A", u"B"}, {{u"", c.value}}};
        for (const bool keep : {false, true}) {
            Opened opened(info, 2, 99, c.limit, keep);
            ASSERT_EQ(opened.Read(), 0);
            EXPECT_EQ(opened.row.Texts(), (Row{"", keep ? c.kept : c.text}));
            EXPECT_EQ(opened.reader.GetCutColumn(), (keep ? c.isKeptCut : c.isCut) ? 1 : -1) << c.text;
        }
    }
    script.table.rows = {{1.0, Value(VT_ERROR)}};
    Opened opened(info);
    EXPECT_EQ(opened.Read(), DISP_E_TYPEMISMATCH);
    EXPECT_TRUE(opened.row.IsUntouched());
}

TEST_F(Reader, PlainTextsAreTakenWithoutTheirValuesUnlessTheyAreTooLong) {
    script.table = {{u"a", u"b", u"c"}, {{1.0, u" two", u"three"}, {4.0, Value(VT_ERROR), u"three"}}};
    script.plainTexts = {"plain", nullptr, "taken as a value"};
    Opened opened(info, 3, 99, 5);
    EXPECT_EQ(opened.Read(), S_OK);
    EXPECT_EQ(opened.row.Texts(), (Row{"plain", "two", "three"}));
    EXPECT_EQ(script.calls["GetValue"], 2);
    EXPECT_EQ(opened.Read(), DISP_E_TYPEMISMATCH);
    script.plainTexts[1] = "";
    EXPECT_EQ(opened.Read(), S_OK);
    EXPECT_EQ(opened.row.Texts(), (Row{"plain", "", "three"}));
    script.table = {{u"a"}, {{u"as a\nvalue"}}};
    script.plainTexts = {"two\nlines"};
    for (const bool keep : {false, true}) {
        Opened lines(info, 1, 99, 20, keep);
        EXPECT_EQ(lines.Read(), S_OK);
        EXPECT_EQ(lines.row.Texts(), Row{keep ? "two\nlines" : "as avalue"});
    }
}

TEST_F(Reader, RowsAndNamesFillTheLineBufferToTheLastByteAndNoFurther) {
    script.table = {{u"abc", u"", u"de "}, {{u"xyz", u"", u"12  "}}};
    // Both need 4 + 1 + 3 bytes, and the buffer has one byte more than the limit.
    for (DWORD line = 0; line < 12; ++line) {
        const HRESULT expected = line + 1 >= 8 ? 0 : DB_E_DATAOVERFLOW;
        Opened opened(info, 3, line, 9);
        EXPECT_EQ(opened.ReadNames(), expected) << line;
        EXPECT_EQ(opened.names.IsUntouched(), expected != 0);
        EXPECT_EQ(opened.Read(), expected) << line;
        EXPECT_EQ(opened.row.IsUntouched(), expected != 0);
    }
    for (DWORD field = 0; field < 5; ++field)
        EXPECT_EQ(Opened(info, 3, 99, field).ReadNames(), field + 1 >= 3 ? 0 : DB_E_DATAOVERFLOW) << field;
    script.table = {{u"a"}, {{std::u16string(70000, u'x')}}};
    Opened longest(info, 1, 0xFFFFFFFF, 0xFFFFFFFF);
    ASSERT_EQ(longest.Read(), 0);
    EXPECT_EQ(longest.row.lengths[0], 65535U);
}

TEST_F(Reader, MoreColumnsThanTheArraysHoldAreRefused) {
    for (DWORD columns = 0; columns < 4; ++columns) {
        CADOOperater reader(columns, 99, 20);
        const bool fits = columns >= 2;
        EXPECT_EQ(reader.FileOpen(&info), fits);
        EXPECT_EQ(reader.GetErrorRet(), fits ? 0 : DB_E_DATAOVERFLOW);
        EXPECT_EQ(std::string(reader.GetErrorDescription()).find("2 columns"), fits ? std::string::npos : 0U);
        EXPECT_EQ(reader.GetFieldCnt(), fits ? 2U : 0U);
        EXPECT_EQ(Raised([&] { reader.HasNextLineData(); }), fits ? 0 : adErrObjectClosed);
    }
}

TEST_F(Reader, ReadsSeveralTablesOfASourceThatIsOpenedOnce) {
    const int opened = script.calls["Open"];
    CADOOperater reader(2, 99, 20);
    script.FailAt("OpenTable", E_FAIL);
    EXPECT_FALSE(reader.FileOpen(&info));
    for (const std::size_t rows : {2U, 0U, 3U}) {
        script.table.rows.assign(rows, {1.0, 2.0});
        EXPECT_TRUE(reader.OpenTable(&info));
        EXPECT_EQ(reader.GetErrorRet(), 0);
        EXPECT_EQ(reader.GetMaxRowNum(), rows);
    }
    EXPECT_EQ(script.calls["Open"], opened + 1);
}

TEST_F(Reader, AllocatesNothingForRows) {
    script.table.rows = {{1.5, u"some text"}, {Date(45000.5), u"another text"}, {100.25, u"third text"}};
    Opened opened(info);
    ASSERT_EQ(opened.Read(), 0);
    const Faults::Scope count(Faults::Call::Allocate, SIZE_MAX, 0);
    EXPECT_EQ(opened.Read() + opened.Read() + static_cast<HRESULT>(count.Calls()), 0);
}

} // namespace
