// Parts of the reader by themselves: what databases made for tests do not bring about.
#include "providers/access/CQueryConditions.h"
#include "providers/access/SCColumnProperties.h"
#include "providers/access/SCJetText.h"
#include "providers/access/SCNameOrder.h"
#include "providers/common/CSourceError.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace NSTQ::Providers;
using namespace std::string_view_literals;

std::span<const unsigned char> BytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST(JetText, IsDecompressed) {
    constexpr struct {
        std::string_view bytes;
        std::u16string_view text;
    } cases[] = {
        {"", u""},
        {"a", u""},
        {"a\0b\0"sv, u"ab"},
        {"a\0b"sv, u"a"},
        {"\xFF\xFE", u""},
        {"\xFF\xFE"
         "abc\xE9",
         u"abc\u00E9"},
        {"\xFF\xFE"
         "ab\0\xE5\x65"sv,
         u"ab\u65E5"},
        {"\xFF\xFE\0\xE5\x65\x2C\x67\0cd"sv, u"\u65E5\u672Ccd"},
        {"\xFF\xFE\0\xE5\x65"
         "a\0\0b"sv,
         u"\u65E5ab"}, // a pair whose upper byte is 0 does not turn back
        {"\xFF\xFE\0\0\0"sv, u""},
        {"\xFF\xFE"
         "a\0\xE5"sv,
         u"a"},
    };
    Platform::CBstr text;
    for (const auto& [bytes, expected] : cases) {
        SCJetText::DecodeWide(BytesOf(bytes), text);
        EXPECT_EQ(text.View(), expected) << testing::PrintToString(bytes);
    }
}

TEST(JetText, ComesFromCodePages) {
    constexpr struct {
        unsigned codePage;
        std::string_view bytes;
        std::u16string_view text;
    } cases[] = {
        {1252, "a\xE9\x80", u"a\u00E9\u20AC"},
        {932, "\x83\x5C\x81\x5B", u"\u30BD\u30FC"},
        {1251, "\xCF\xF0\x88", u"\u041F\u0440\u20AC"},
        {1250, "\xB9\x81", u"\u0105\u0081"},
        {874, "\xA1\xFF", u"\u0E01\uFFFD"},
        {1361, "ascii", u"ascii"},
    };
    Platform::CBstr text;
    for (const auto& [codePage, bytes, expected] : cases) {
        SCJetText::DecodeNarrow(BytesOf(bytes), codePage, text);
        EXPECT_EQ(text.View(), expected) << codePage;
    }
    EXPECT_THROW(SCJetText::DecodeNarrow(BytesOf("\xD0\x61"), 1361, text), CSourceError);
    EXPECT_THROW(SCJetText::DecodeNarrow(BytesOf("\xD0\x61"), 0, text), CSourceError);
}

TEST(NameOrder, LeavesCaseOutOfAccount) {
    EXPECT_EQ(SCNameOrder::Compare(u"ORDERS \u00C9\u0394\u0416\u0139\u0178\uFF21",
                                   u"orders \u00E9\u03B4\u0436\u013A\u0178\uFF41"),
              0);
    EXPECT_NE(SCNameOrder::Compare(u"\u00D7", u"\u00F7"), 0);
    EXPECT_LT(SCNameOrder::Compare(u"a", u"B"), 0);
    EXPECT_LT(SCNameOrder::Compare(u"a", u"ab"), 0);
}

/// One row with a column of each class.
class COneRow : public Platform::IRowSource {
public:
    COneRow() {
        m_values[0].vt = Platform::VT_I4;
        m_values[0].lVal = 5;
        m_text.Assign(u"Tokyo");
        m_values[1].vt = Platform::VT_BSTR;
        m_values[1].bstrVal = m_text.Get();
        m_values[2].vt = Platform::VT_DATE;
        m_values[2].date = 39448.75; // 2008-01-01 18:00
        m_values[3].vt = Platform::VT_CY;
        m_values[3].cyVal = 123000;
        m_values[4].vt = Platform::VT_NULL;
        m_values[5].vt = Platform::VT_BOOL;
        m_values[5].boolVal = Platform::VARIANT_TRUE;
    }
    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    std::int64_t GetRowCount() const override { return 1; }
    bool MoveNext() override { return false; }
    const Platform::VARIANT& GetValue(std::size_t column) override { return m_values[column]; }

private:
    std::vector<std::u16string> m_names;
    Platform::CBstr m_text;
    Platform::VARIANT m_values[6] = {};
};

constexpr char holds = '1', fails = '0', refused = '-';

TEST(QueryConditions, AreCheckedOrRefused) {
    const std::pair<std::u16string_view, char> cases[] = {
        {u"n=5", holds},
        {u"((([my table].[n])=5))", holds},
        {u"t.N = 5.0E0 AND 4<n", holds},
        {u"n<>5", fails},
        {u"n >= -5 and n <= 5", holds},
        {u"n Between 1 And 5 AND s=\"tokyo\"", holds},
        {u"(n) Between 6 And 9", fails},
        {u"s='TOKYO'", holds},
        {u"s<>\"Tokyo\"", fails},
        {u"s>\"tok\" And s<\"Z\"", holds},
        {u"s=\"it's \"\"so\"\"\"", fails},
        {u"d=#1/1/2008 18:00:00#", holds},
        {u"d=#1/1/2008 6:00 PM#", holds},
        {u"d>#2008-01-01#", holds},
        {u"d<#12/31/2007 23:59:59#", fails},
        {u"c=12.3", holds},
        {u"c>12.3", fails},
        {u"x=1", fails},
        {u"x<>1", fails},
        {u"x Is Null", holds},
        {u"n Is Not Null", holds},
        {u"b=True", holds},
        {u"b=No", fails},
        {u"n=5 OR n=6", refused},
        {u"Not n=5", refused},
        {u"s Like \"T*\"", refused},
        {u"n In (5)", refused},
        {u"n=[Which?]", refused},
        {u"other.n=5", refused},
        {u"n=\"5\"", refused},
        {u"s=5", refused},
        {u"g=5", refused},
        {u"n=n", refused},
        {u"n=5 AND", refused},
        {u"n", refused},
        {u"5", refused},
        {u"n=Null", refused},
        {u"n Between 9 And 6", refused},
        {u"(n=5", refused},
        {u"n=5)", refused},
        {u"n=5 n=5", refused},
        {u"n=5x", refused},
        {u"n=#", refused},
        {u"d=#", refused},
        {u"d=#13/1/2008#", refused},
        {u"d=#1/1/08#", refused},
        {u"s=\"open", refused},
        {u"[n=5", refused},
        {u"n=Len(s)", refused},
        {u"", refused},
    };
    std::vector<SColumn> columns(7);
    constexpr std::pair<std::u16string_view, EColumnType> kinds[] = {
        {u"n", EColumnType::Long},     {u"s", EColumnType::Text},    {u"d", EColumnType::DateTime},
        {u"c", EColumnType::Currency}, {u"x", EColumnType::Integer}, {u"b", EColumnType::Boolean},
        {u"g", EColumnType::Guid}};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].strName = kinds[i].first;
        columns[i].type = kinds[i].second;
    }
    const std::vector<std::u16string> tables = {u"My Table", u"T"};
    const CColumnScope scope(columns, tables);
    COneRow row;
    for (const auto& [text, expected] : cases) {
        const auto conditions = CQueryConditions::Parse(text, scope);
        const char found = !conditions ? refused : conditions->Hold(row) ? holds : fails;
        EXPECT_EQ(found, expected) << testing::PrintToString(std::u16string(text));
    }
    EXPECT_FALSE(CQueryConditions::Parse(std::u16string(100'000, u'('), scope));
}

std::string Number(std::size_t value, std::size_t size) {
    std::string bytes;
    for (; size > 0; --size, value >>= 8)
        bytes.push_back(static_cast<char>(value & 0xFF));
    return bytes;
}

std::string Wide(std::string_view text) {
    std::string bytes = Number(text.size() * 2, 2);
    for (const char c : text)
        bytes += {c, '\0'};
    return bytes;
}

std::string Chunk(std::size_t kind, const std::string& content) {
    return Number(content.size() + 6, 4) + Number(kind, 2) + content;
}

TEST(ColumnProperties, GiveCalculatedColumnsTheirTypes) {
    const auto property = [](std::size_t name, std::string_view value) {
        return Number(8 + value.size(), 2) + Number(0, 2) + Number(name, 2) + Number(value.size(), 2) +
               std::string(value);
    };
    const std::string name = Wide("total");
    const std::string block = "MR2" + Number(0, 1) + Chunk(0x80, Wide("Format") + Wide("ResultType")) +
                              Chunk(1, Number(4 + name.size(), 4) + name + property(0, "x") + property(1, "\x07"));
    for (std::size_t length = 0; length <= block.size(); ++length) {
        std::vector<SColumn> columns(2);
        columns[0].strName = u"Total";
        columns[1].strName = u"Total";
        columns[1].isCalculated = true;
        SCColumnProperties::TakeResultTypes(BytesOf(std::string_view(block).substr(0, length)), columns);
        EXPECT_EQ(columns[0].type, EColumnType{});
        EXPECT_EQ(columns[1].type, length == block.size() ? EColumnType::Double : EColumnType{}) << length;
    }
}

} // namespace
} // namespace NSTQ::Tests
