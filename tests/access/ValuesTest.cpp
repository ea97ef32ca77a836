// Each type of column at its limits, as text, and the values that are refused.
#include "access/AccessHarness.h"
#include "providers/access/SCColumnProperties.h"
#include "support/Raised.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <numeric>

namespace NSTQ::Tests {
namespace {

using enum EAccess;
using namespace Platform;
using namespace std::string_literals;
using Whole = std::numeric_limits<std::int64_t>;
using Real = std::numeric_limits<double>;

struct SValueCase {
    SAccessColumn column;
    AccessValue value;
    std::string strText;
    EJet first = EJet::Jet3;
};

SAccessColumn Variable(EAccess type) {
    return {.type = type, .isVariable = true};
}

SAccessColumn Calculated(EAccess type, unsigned char scale = 0) {
    return {.type = type, .scale = scale, .isCalculated = true};
}

/// The bytes of the value unchanged, in a column whose definition states the type.
SAccessColumn Raw(EAccess type, bool isCalculated = false) {
    return {.type = Binary, .isCalculated = isCalculated, .shownType = type};
}

std::int64_t Int(std::int64_t value) {
    return value;
}

const std::string guid("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF", 16);
const std::string extendedDate("0000000000000738915:0000000863991234567:7\0", 42);

const SValueCase valueCases[] = {
    {{"", Boolean}, true, "-1"},
    {{"", Boolean}, false, "0"},
    {{"", Boolean}, {}, "0"},
    {{"", Byte}, Int(255), "255"},
    {{"", Integer}, Int(-32768), "-32768"},
    {{"", Long}, Int(-2147483648LL), "-2147483648"},
    {Variable(Long), Int(-7), "-7"},
    {Variable(Long), {}, ""},
    {{"", Currency}, Whole::max(), "922337203685477.5807"},
    {{"", Currency}, Int(-1), "-0.0001"},
    {{"", Single}, 0.1, "0.1"},
    {{"", Double}, Real::max(), "1.79769313486232E+308"},
    {{"", Date}, -657434.75, "0100/01/01 18:00:00"},
    {{"", Date}, 2958465.0 + 86399.0 / 86400, "9999/12/31 23:59:59"},
    {{"", Date}, 2958466.0, "2958466"},
    {{"", Binary}, "\x01\xAB\xFF", "0x01ABFF"},
    {{"", Ole}, std::string("\0x", 2), "0x0078"},
    {{"", Ole}, {}, ""},
    {{"", Guid}, guid, "{00112233-4455-6677-8899-AABBCCDDEEFF}"},
    {Variable(Guid), guid, "{00112233-4455-6677-8899-AABBCCDDEEFF}"},
    {{"", Numeric, 0}, "9999999999999999999999999999", "9999999999999999999999999999"},
    {{"", Numeric, 0}, "-9999999999999999999999999999", "-9999999999999999999999999999"},
    {{"", Numeric, 28}, "-1", "-0.0000000000000000000000000001"},
    {{"", Numeric, 14}, "1234567890123456789012345678", "12345678901234.56789012345678"},
    {{"", Numeric, 4}, {}, ""},
    {{"", Text}, "", ""},
    {{"", Text}, {}, ""},
    {{"", Memo}, "plain", "plain"},
    {{"", Memo}, "", ""},
    {{"", Memo}, {}, ""},
    {{"", Text}, " a\tb ", " a\tb "},
    {{"", Text}, "a long beginning, 東京, and an end", "a long beginning, 東京, and an end", EJet::Jet4},
    {{"", Text}, "compressed but for Ā", "compressed but for Ā", EJet::Jet4},
    {{.type = Text, .isCompressed = false}, "never compressed", "never compressed", EJet::Jet4},
    {{"", Text}, std::string(255, 'x'), std::string(255, 'x'), EJet::Jet4},
    {{"", Complex}, Int(1), "", EJet::Ace12},
    {Calculated(Long), Int(-5), "-5", EJet::Ace14},
    {Calculated(Text), "a result", "a result", EJet::Ace14},
    {Calculated(Memo), "a long result", "a long result", EJet::Ace14},
    {Calculated(Binary), "\1\2", "0x0102", EJet::Ace14},
    {Calculated(Boolean), true, "-1", EJet::Ace14},
    {Calculated(Double), 2.5, "2.5", EJet::Ace14},
    {Calculated(Currency), Int(25000), "2.5", EJet::Ace14},
    {Calculated(Date), 45000.5, "2023/03/15 12:00:00", EJet::Ace14},
    {Calculated(Numeric, 3), "-12345678901234567890", "-12345678901234567.89", EJet::Ace14},
    {Calculated(Long), {}, "", EJet::Ace14},
    {{"", Large}, Whole::max(), "9223372036854775807", EJet::Ace16},
    {{"", Large}, Whole::min(), "-9223372036854775808", EJet::Ace16},
    {Raw(Long), "", ""},
    {Raw(Numeric), "", ""},
    {Raw(Memo), "", ""},
    {Raw(Guid), "\1\2", "0x0102"},
    {Raw(ExtendedDate), "3652058:0", "0x333635323035383A30"},
    {Raw(ExtendedDate), "0000000000003652059:0000000000000000000",
     "0x303030303030303030303030333635323035393A30303030303030303030303030303030303030"},
    {Raw(ExtendedDate), "9999999999999999999:0000000000000000000",
     "0x393939393939393939393939393939393939393A30303030303030303030303030303030303030"},
    {Raw(Text), "a"s, "", EJet::Jet4},
    {Raw(Text), "a\0b\0"s, "ab", EJet::Jet4},
    {Raw(Text), "a\0b"s, "a", EJet::Jet4},
    {Raw(Text), "\xFF\xFE", "", EJet::Jet4},
    {Raw(Text), "\xFF\xFE\x61\xE9", "a\u00E9", EJet::Jet4},
    {Raw(Text), "\xFF\xFE\x61\0\xE5\x65"s, "a\u65E5", EJet::Jet4},
    {Raw(Text), "\xFF\xFE\0\xE5\x65\x2C\x67\0\x63\x64"s, "\u65E5\u672Ccd", EJet::Jet4},
    // A unit whose high byte is 0 does not end the uncompressed part.
    {Raw(Text), "\xFF\xFE\0\xE5\x65\x61\0\0\x62"s, "\u65E5ab", EJet::Jet4},
    {Raw(Text), "\xFF\xFE\x61\0\0\0"s, "a", EJet::Jet4},
    {Raw(Text), "\xFF\xFE\x61\0\xE5"s, "a", EJet::Jet4},
    {Raw(Text), "\xFF\xFE\0\xE5\x65\x2C"s, "\u65E5", EJet::Jet4},
    {Raw(Numeric, true), "\x0E\0\1\0\0\0\0\0\5\0\0\0\0\0\0\0"s, "0.5", EJet::Ace14},
    {{"", ExtendedDate}, extendedDate, "2024-01-31 23:59:59.1234567", EJet::Ace16},
};

/// The types that the kinds of their values do not tell, with the precision and sizes that the writer states.
const std::map<EAccess, SFieldType> typesOfColumns = {
    {Binary, {EDataType::adVarBinary, 0, 0, 255}},
    {Text, {EDataType::adVarWChar, 0, 0, 255}},
    {Ole, {EDataType::adLongVarBinary}},
    {Memo, {EDataType::adLongVarWChar}},
    {Guid, {EDataType::adGUID}},
    {Numeric, {EDataType::adNumeric, 26}},
    {Complex, {EDataType::adVarWChar}},
    {ExtendedDate, {EDataType::adVarWChar}},
};

void ExpectType(const SAccessColumn& column, const SFieldType& type) {
    const EAccess shown = column.shownType.value_or(column.type);
    if (!typesOfColumns.contains(shown))
        return;
    SFieldType expected = typesOfColumns.at(shown);
    expected.numericScale = column.scale;
    if (column.scale > expected.precision)
        expected.precision = 28;
    if (column.isCalculated)
        expected = {shown == Numeric ? EDataType::adDecimal : expected.type};
    else if (column.shownType)
        expected = {expected.type, type.precision, type.numericScale, type.definedSize};
    EXPECT_EQ(type, expected);
}

TEST(AccessValues, EachTypeAtItsLimits) {
    for (const EJet version : allVersions) {
        std::vector<SAccessColumn> columns;
        std::vector<std::string> expected;
        AccessRow row;
        for (const SValueCase& known : valueCases) {
            if (known.first > version)
                continue;
            columns.push_back(known.column);
            columns.back().strName = "c" + std::to_string(columns.size());
            row.push_back(known.value);
            expected.push_back(known.strText);
        }
        CAccessWriter writer(version);
        writer.AddTable("T", columns).Add(row);
        const CAccessFile file(writer.Finish().Bytes());
        std::string rest = file.Rows("T");
        const auto types = file.Open("T")->GetColumnTypes();
        for (std::size_t i = 0; i < expected.size(); ++i) {
            SCOPED_TRACE("version " + std::to_string(int(version)) + ", column " + std::to_string(i));
            ExpectType(columns[i], types.at(i));
            const std::size_t end = std::min(rest.find_first_of("|\n"), rest.size());
            EXPECT_EQ(rest.substr(0, end), expected[i]);
            rest.erase(0, end + 1);
        }
        EXPECT_EQ(rest, "");
    }
}

const struct {
    SAccessColumn column;
    std::string strValue;
    const char* words; ///< of the description
    EJet version = EJet::Jet4;
} wrongCases[] = {
    {Raw(Long), "\1\2\3", "too short"},
    {Raw(Numeric), "\1\2\3\4", "an invalid size"},
    {Raw(Numeric), std::string(21, '1'), "an invalid size"},
    {{.type = Numeric, .scale = 29}, "1", "too many digits"},
    {{.type = Numeric}, std::string(30, '9'), "too many digits"},
    {Raw(Numeric, true), "\1\2\3\4\5", "too short"},
    {Raw(Memo), "\1\2\3", "no header"},
    {Raw(Memo), "\5\0\0\x80"s + std::string(8, '\0') + "abcd", "too early"},
    {Raw(Memo), "\1\0\0\4"s + std::string(8, '\0'), "67108865 bytes is too long"},
    {{.type = Text}, "\xD0\x61", "code page 1361", EJet::Jet3},
};

TEST(AccessValues, InvalidOnesSayWhy) {
    for (const auto& wrong : wrongCases) {
        CAccessWriter writer(wrong.version);
        writer.SetCodePage(1361);
        writer.AddTable("T", {wrong.column}).Add({wrong.strValue});
        EXPECT_THAT(RowsOf(writer), testing::ContainsRegex("raised data.mdb: .*" + std::string(wrong.words)));
    }
}

/// What a reader shows of bytes ends after 65535; a long value is returned as long as the file may hold it.
TEST(AccessValues, ExactValuesAreWhole) {
    std::string bytes(200000, '\0'), text = std::string(100000, 'x') + "ソ";
    std::iota(bytes.begin(), bytes.end(), '\0');
    CAccessWriter writer(EJet::Jet4);
    writer.AddTable("T", {{"b", Ole}, {"m", Memo}}).Add({bytes, text}).Add({{}, {}});
    writer.AddTable("Long", {Raw(Memo)}).Add({"\1\0\0\4"s + std::string(8, '\0')});
    const CAccessFile file(writer.Finish().Bytes());
    const auto rows = file.Open("T");
    ASSERT_TRUE(rows->MoveNext());
    EXPECT_EQ(SysStringLen(rows->GetValue(0).bstrVal), 2 + 2 * 65535U);
    const SExactValue exact = rows->GetExactValue(0);
    EXPECT_EQ(exact.value.vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(std::string(exact.bytes.begin(), exact.bytes.end()), bytes);
    EXPECT_EQ(BstrView(rows->GetExactValue(1).value.bstrVal), Providers::ToUtf16(text));
    ASSERT_TRUE(rows->MoveNext());
    EXPECT_EQ(rows->GetExactValue(0).value.vt, VT_NULL);
    EXPECT_TRUE(rows->GetExactValue(0).bytes.empty());
    const auto damaged = file.Open("Long");
    ASSERT_TRUE(damaged->MoveNext());
    EXPECT_THAT(CauseOf([&] { damaged->GetExactValue(0); }), testing::HasSubstr("longer than the file"));
}

/// A record of a long value belongs to one field: a file that has more to read than it holds is forged.
TEST(AccessValues, LongValuesThatShareARecordAreRefused) {
    CAccessWriter writer(EJet::Jet4);
    CAccessTable& other =
        writer.AddTable("Other", {{"m", Memo}}, {.longValue = SAccessTableOptions::ELongValue::OnePage});
    other.Add({std::string(3000, 'x')});
    CAccessTable& table = writer.AddTable("T", {Raw(Memo), {"missing", Memo}});
    const std::string shared =
        LittleEndian(0x40000BB8, 4) + SRecordPlace{other.LongPages()[0], 0}.Pointer() + std::string(4, '\0');
    for (int i = 0; i < 1000; ++i)
        table.Add({shared, {}});
    const CAccessFile file(writer.Finish().Bytes());
    EXPECT_THAT(file.Rows("T"), testing::HasSubstr("overlap or form a cycle"));
    const auto rows = file.Open("T");
    const auto read = [&rows = *rows] {
        for (std::string_view texts[2]; rows.MoveNext();) {
            rows.GetPlainTexts(texts, false);
            for (const std::size_t i : {0U, 1U})
                if (texts[i].data() == nullptr)
                    rows.GetValue(i);
        }
    };
    EXPECT_THAT(CauseOf(read), testing::HasSubstr("overlap or form a cycle")) << "as a reader reads them";
}

TEST(AccessValues, TextsAreInTheCodePageOfTheFileOrInUtf16) {
    const std::tuple<EJet, unsigned, const char*, std::string> cases[] = {
        {EJet::Jet3, 1252, "m\xFCller \x80", "müller €"},
        {EJet::Jet3, 932, "\x83\x5C\x81\x5B|\x95\x5C", "ソー|表"},
        {EJet::Jet3, 1361, "ascii", "ascii"},
        {EJet::Jet4, 1252, "ソー 表 한 😀", "ソー 表 한 😀"},
    };
    for (const auto& [version, filePage, text, expected] : cases) {
        CAccessWriter writer(version);
        writer.SetCodePage(filePage);
        writer.AddTable("T", {{"Text"}, {"Memo", Memo}}).Add({text, text});
        EXPECT_EQ(RowsOf(writer), expected + "|" + expected + "\n");
    }
    CAccessWriter writer(EJet::Jet4);
    writer.AddTable("表 1", {{"ソース", Long}, {"[x] %", Long}}).Add({Int(1), Int(2)});
    const CAccessFile file(writer.Finish().Bytes());
    EXPECT_EQ(file.Names(), "表 1");
    EXPECT_EQ(file.Rows("表 1", true), "ソース|[x] %\n1|2\n");
}

std::string Sized(const std::string& bytes, std::size_t width, std::size_t extra = 0) {
    return LittleEndian(bytes.size() + extra, width) + bytes;
}

std::string Chunk(std::size_t kind, const std::string& content) {
    return LittleEndian(content.size() + 6, 4) + LittleEndian(kind, 2) + content;
}

TEST(AccessValues, PropertiesGiveCalculatedColumnsTheirTypes) {
    const auto property = [](std::size_t name, const std::string& value) {
        return Sized(LittleEndian(0, 2) + LittleEndian(name, 2) + Sized(value, 2), 2, 2);
    };
    const auto wide = [](const char* text) { return Sized(Utf16Bytes(text), 2); };
    const std::string block = "MR2" + std::string(1, '\0') + Chunk(0x80, wide("Format") + wide("ResultType")) +
                              Chunk(1, Sized(wide("total"), 4, 4) + property(0, "x") + property(1, "\x07"));
    for (std::size_t length = 0; length <= block.size(); ++length) {
        std::vector<Providers::SColumn> columns(2);
        columns[0].name = u"Total";
        columns[1].name = u"Total";
        columns[1].isCalculated = true;
        Providers::SCColumnProperties::TakeResultTypes({reinterpret_cast<const unsigned char*>(block.data()), length},
                                                       columns);
        EXPECT_EQ(columns[0].type, Providers::EColumnType{});
        EXPECT_EQ(columns[1].type, length == block.size() ? Providers::EColumnType::Double : Providers::EColumnType{})
            << length;
    }
}

} // namespace
} // namespace NSTQ::Tests
