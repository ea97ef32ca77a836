// The C interface, called as a program in C calls it: every outcome is written down as one text.
#include "tqcAccess.h"

#include "support/AccessWriter.h"
#include "support/Bytes.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <set>
#include <thread>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;
using Faults::Call;

/// Options with their size, and with what they point to.
struct SSetting {
    const char* encoding = nullptr;
    tqc_type type = TQC_AUTO;
    const char* password = nullptr;
    std::vector<std::uint16_t> widths{};
    bool hasNoHeader = false;
    bool replacesInvalid = false;
    bool endsQuotesAtLine = false;
    char separator = 0;
    std::size_t size = sizeof(tqc_options);

    tqc_options Get() const {
        return {size,
                type,
                password,
                encoding,
                separator,
                hasNoHeader,
                replacesInvalid,
                endsQuotesAtLine,
                widths.data(),
                widths.size(),
                true};
    }
};

/// '!', the status and the sentence without the path, which must be in front. Frees the error.
std::string Failure(tqc_status status, tqc_error*& error, const std::string& path) {
    if (error == nullptr)
        return "no error object";
    const std::string text = tqc_error_text(error);
    EXPECT_EQ(tqc_error_status(error), status);
    EXPECT_EQ(tqc_error_path(error), path);
    EXPECT_TRUE(text.starts_with(path + ": ")) << text;
    tqc_free_error(error);
    error = nullptr;
    return "!" + std::to_string(status) + " " + text.substr(std::min(text.size(), path.size() + 2));
}

/// The rows of a table, whose source is closed before the first one is read.
class COpened {
public:
    explicit COpened(std::string path, const SSetting& setting = {}, const char* table = nullptr)
        : m_path(std::move(path)) {
        const tqc_options options = setting.Get();
        tqc_source* source = nullptr;
        std::size_t position = 0;
        tqc_status status = tqc_open(m_path.c_str(), &options, &source, &m_error);
        if (status == TQC_OK && table != nullptr)
            status = tqc_find_table(source, table, &position, &m_error);
        if (status == TQC_OK)
            status = tqc_open_rows(source, position, &m_rows, &m_error);
        tqc_close_source(source);
        if (status != TQC_OK)
            m_failure = Failure(status, m_error, m_path);
    }
    COpened(const COpened&) = delete;
    COpened& operator=(const COpened&) = delete;
    ~COpened() { tqc_close_rows(m_rows); }

    /// "name,name:" and each row as "field|field;" ('-' for null), then "." at the end, or the failure.
    std::string Rows() {
        return Read([this](std::string& text) {
            const tqc_field* fields = nullptr;
            std::size_t count = 0;
            const tqc_status status = tqc_next_row(m_rows, &fields, &count, &m_error);
            for (std::size_t i = 0; status == TQC_OK && i < count; ++i) {
                EXPECT_TRUE(fields[i].text == nullptr || fields[i].text[fields[i].length] == '\0');
                text += (i > 0 ? "|" : "") +
                        (fields[i].text == nullptr ? "-" : std::string(fields[i].text, fields[i].length));
            }
            return status;
        });
    }

    /// The same with values: those that are no texts begin with the number of their type.
    std::string Values() {
        return Read([this](std::string& text) {
            const tqc_value* values = nullptr;
            std::size_t count = 0;
            const tqc_status status = tqc_next_values(m_rows, &values, &count, &m_error);
            for (std::size_t i = 0; status == TQC_OK && i < count; ++i)
                text += (i > 0 ? "|" : "") + Value(values[i]);
            return status;
        });
    }

    /// The same from batches of at most `size` rows, with the formats of the columns behind their names.
    std::string Batches(std::size_t size) {
        if (m_rows == nullptr)
            return m_failure;
        ArrowSchema schema{};
        EXPECT_EQ(tqc_get_schema(m_rows, &schema, nullptr), TQC_OK);
        std::string text;
        std::vector<std::string> formats;
        for (std::int64_t i = 0; i < schema.n_children; ++i) {
            formats.emplace_back(schema.children[i]->format);
            text += (i > 0 ? "," : "") + (schema.children[i]->name + (" " + formats.back()));
        }
        schema.release(&schema);
        text += ':';
        for (;;) {
            ArrowArray batch{};
            const tqc_status status = tqc_next_batch(m_rows, size, &batch, &m_error);
            if (status == TQC_OK)
                text += TakeBatch(batch, formats, size);
            else
                return text + (status == TQC_END ? "." : Failure(status, m_error, m_path));
        }
    }

    tqc_rows* Release() { return std::exchange(m_rows, nullptr); }

private:
    /// `read` appends a row.
    template <class TRead>
    std::string Read(TRead read) {
        if (m_rows == nullptr)
            return m_failure;
        std::string text;
        for (std::size_t i = 0; i < tqc_column_count(m_rows); ++i)
            text += (i > 0 ? "," : "") + std::string(tqc_column_name(m_rows, i));
        text += ':';
        for (;; text += ';') {
            const tqc_status status = read(text);
            if (status == TQC_END)
                return text + '.';
            if (status != TQC_OK)
                text += Failure(status, m_error, m_path);
            if (status != TQC_OK && status != TQC_INVALID_TEXT)
                return text;
        }
    }

    static std::string Value(const tqc_value& value) {
        const std::string type = std::to_string(value.type) + ':';
        char number[40];
        std::snprintf(number, sizeof number, "%.17g", value.number);
        EXPECT_TRUE(value.text == nullptr || value.text[value.length] == '\0');
        switch (value.type) {
        case TQC_VALUE_NULL:
            return "-";
        case TQC_VALUE_BOOL:
        case TQC_VALUE_INTEGER:
            return type + std::to_string(value.integer);
        case TQC_VALUE_FLOAT:
        case TQC_VALUE_DOUBLE:
            return type + number;
        case TQC_VALUE_DATE:
            return type + number + '=' + value.text;
        default:
            return (value.type == TQC_VALUE_TEXT ? "" : type) + std::string(value.text, value.length);
        }
    }

    /// The children are moved out of the batch, which is released before they are read.
    static std::string TakeBatch(ArrowArray& batch, const std::vector<std::string>& formats, std::size_t size) {
        EXPECT_TRUE(batch.length > 0 && (size == 0 || batch.length <= static_cast<std::int64_t>(size)));
        std::vector<ArrowArray> columns;
        for (std::int64_t i = 0; i < batch.n_children; ++i) {
            columns.push_back(*batch.children[i]);
            batch.children[i]->release = nullptr;
            EXPECT_EQ(columns.back().length, batch.length);
        }
        const std::int64_t length = batch.length;
        batch.release(&batch);
        EXPECT_EQ(batch.release, nullptr);
        std::string text;
        std::vector<std::int64_t> nulls(columns.size());
        for (std::int64_t row = 0; row < length; ++row, text += ';')
            for (std::size_t i = 0; i < columns.size(); ++i) {
                const std::string value = Value(columns[i], formats[i], static_cast<std::size_t>(row));
                nulls[i] += value == "-" ? 1 : 0;
                text += (i > 0 ? "|" : "") + value;
            }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            EXPECT_EQ(columns[i].null_count, nulls[i]);
            columns[i].release(&columns[i]);
        }
        return text;
    }

    template <class TValue>
    static TValue At(const ArrowArray& array, std::size_t row) {
        return static_cast<const TValue*>(array.buffers[1])[row];
    }
    static bool Bit(const void* bits, std::size_t at) {
        return (static_cast<const unsigned char*>(bits)[at / 8] >> at % 8 & 1) != 0;
    }

    static std::string Value(const ArrowArray& array, const std::string& format, std::size_t row) {
        if (array.buffers[0] != nullptr && !Bit(array.buffers[0], row))
            return "-";
        char number[40];
        switch (format[0]) {
        case 'l':
        case 't':
            return std::to_string(At<std::int64_t>(array, row));
        case 'g':
            std::snprintf(number, sizeof number, "%.15g", At<double>(array, row));
            return number;
        case 'b':
            return Bit(array.buffers[1], row) ? "true" : "false";
        case 'd':
            return Decimal(At<std::int64_t>(array, row * 2), At<std::int64_t>(array, row * 2 + 1));
        default:
            return {static_cast<const char*>(array.buffers[2]) + At<std::int32_t>(array, row),
                    static_cast<const char*>(array.buffers[2]) + At<std::int32_t>(array, row + 1)};
        }
    }
    /// The digits without a point.
    static std::string Decimal(std::int64_t low, std::int64_t high) {
        __extension__ using TInt128 = __int128;
        TInt128 value = static_cast<TInt128>(high) << 64 | static_cast<std::uint64_t>(low);
        std::string digits;
        for (TInt128 rest = value < 0 ? -value : value; rest > 0; rest /= 10)
            digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
        return (value < 0 ? "-" : "") + digits;
    }
    std::string m_path;
    std::string m_failure;
    tqc_rows* m_rows = nullptr;
    tqc_error* m_error = nullptr;
};

/// Batches of every size have the same rows, or before a failure those that a full batch was made of.
void ExpectBatches(const std::string& path, const SSetting& setting, const std::string& expected) {
    for (const std::size_t size : {1U, 2U, 3U, 0U}) {
        const std::string batches = COpened(path, setting).Batches(size);
        const std::size_t failure = expected.find('!');
        if (failure == std::string::npos || size == 1)
            EXPECT_EQ(batches, expected) << size;
        else
            EXPECT_TRUE(batches.ends_with(expected.substr(failure))) << size << ' ' << batches;
    }
}

class CInterface : public testing::Test {
protected:
    CTempFolder m_folder;
};

TEST_F(CInterface, TextsAreReadInTheirEncodingsAsRowsAndAsBatches) {
    const std::string bom = "\xEF\xBB\xBF", longest(65534, 'x');
    const std::string invalid = "!8 row 2: field 2 has bytes that are invalid in utf-8; try another encoding";
    const std::string more = "!6 row 3: text after the last column; give larger or more widths";
    const std::string tooLong =
        "!6 row 2: more than 65535 bytes, which is the maximum; a closing quote may be missing";
    const std::string package = MakeZip({{.name = "TqData\\SourceFile.csv", .content = "a,b\n\x82\xA0,2\n"}});
    const struct {
        const char* title;
        std::string content;
        SSetting setting;
        std::string rows;
        std::string batches = {}; ///< of one row each, when they are not the same
    } cases[] = {
        {"BOM", bom + "a,é\r\n1,東\r\n", {}, "a,é:1|東;."},
        {"Shift_JIS by name", "\x8F\xA4,b\n\x82\xA0,\"\x81\x5C\"\n", {"shift_jis"}, "商,b:あ|―;."},
        {"Shift_JIS by its bytes", "\x8F\xA4,b\n", {}, "商,b:."},
        {"1252", "a,b\n\x80,\xE9\n", {"cp1252"}, "a,b:€|é;."},
        {"invalid", "a,b\n1,\xFF\n2,3\n", {"utf-8"}, "a,b:" + invalid + ";2|3;.", invalid},
        {"replaced", "a\nx\xFFy\n", {.encoding = "utf-8", .replacesInvalid = true}, "a:x\uFFFDy;."},
        {"no header", "1,2\n3,4\n", {.hasNoHeader = true}, "F1,F2:1|2;3|4;."},
        {"columns without names", ",b,\n1,2,3\n", {}, "F1,b,F3:1|2|3;."},
        {"empty", "", {}, ":."},
        {"nothing but a BOM", bom, {}, ":."},
        {"short row", "a,b\n1\n", {}, "a,b:1;.", "1|-;."},
        {"long row", "a\n1,2\n", {}, "a:1|2;.", "!6 row 2: 2 fields, but there are 1 columns"},
        {"too long", "a\n" + longest + "xx\nb\n", {}, "a:" + tooLong},
        {"longest", "a\n" + longest + "\n", {}, "a:" + longest + ";."},
        {"separator", "a;b\n1,5;2\n", {.separator = ';'}, "a,b:1,5|2;."},
        {"options without a separator",
         "a;b\n",
         {.separator = ';', .size = offsetof(tqc_options, separator)},
         "a;b:."},
        {"options of a later version", "a;b\n", {.separator = ';', .size = 1000}, "a,b:."},
        {"SUB before a row", "a\n1\n\x1A \n2\n\x1A\n3\n", {}, "a:1;;2;;3;."},
        {"SUB in a row",
         "a\n1,\x1A"
         "2\n3\n",
         {},
         "a:1;2;3;."},
        {"TABs by content", "a\tb\n1\t2\n", {}, "a,b:1|2;."},
        {"line end in quotes", "a,b\n\"1\n2\",3\n", {}, "a,b:1\n2|3;."},
        {"quotes end at the line", "a\n\"1\n2\n", {.endsQuotesAtLine = true}, "a:1;2;."},
        {"fixed", "abc1\nd  2\n", {.type = TQC_FIXED, .widths = {3, 1}, .hasNoHeader = true}, "F1,F2:abc|1;d|2;."},
        {"fixed, more text", "k v\na  1\nb  2x\n", {.type = TQC_FIXED, .widths = {2, 2}}, "k,v:a|1;" + more},
        {"package", package, {}, "a,b:あ|2;."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.title);
        // The file's name needs another code page than its content.
        const std::string path = m_folder.WriteFile(c.content == package ? "é東京.xtqf" : "é東京.txt", c.content);
        EXPECT_EQ(COpened(path, c.setting).Rows(), c.rows);
        EXPECT_EQ(COpened(path, c.setting).Values(), c.rows);
        std::string expected = c.rows.substr(0, c.rows.find(':'));
        for (std::size_t at = 0; (at = expected.find(',', at)) != std::string::npos; at += 3)
            expected.insert(at, " u");
        expected +=
            (expected.empty() ? ":" : " u:") + (c.batches.empty() ? c.rows.substr(c.rows.find(':') + 1) : c.batches);
        ExpectBatches(path, c.setting, expected);
    }
}

TEST_F(CInterface, WorkbooksGiveTypedColumnsAndMixedOnesAsText) {
    SXlsxParts parts;
    parts.strFormats = "<cellXfs><xf numFmtId='0'/><xf numFmtId='22'/></cellXfs>";
    parts.strStrings = "<si><t>n</t></si><si><t>東京</t></si>";
    parts.strRows =
        "<row><c t='s'><v>0</v></c><c t='str'><v>b</v></c><c t='str'><v>d</v></c><c t='str'><v>m</v></c></row>"
        "<row><c><v>0.1</v></c><c t='b'><v>1</v></c><c s='1'><v>1</v></c><c><v>1.5</v></c></row>"
        "<row><c r='D3' t='b'><v>0</v></c></row>"
        "<row><c><v>-1E+300</v></c><c t='b'><v>0</v></c><c s='1'><v>45000.5</v></c><c t='s'><v>1</v></c></row>";
    const std::string path = m_folder.WriteFile("商品.xlsx", parts.File());
    EXPECT_EQ(COpened(path, {}, "sheet1").Rows(),
              "n,b,d,m:0.1|-1|1900/01/01|1.5;-|-|-|0;-1E+300|0|2023/03/15 12:00:00|東京;.");
    EXPECT_EQ(COpened(path, {}, "sheet1").Values(),
              "n,b,d,m:4:0.10000000000000001|1:1|6:2=1900-01-01|4:1.5;-|-|-|1:0;"
              "4:-1.0000000000000001e+300|1:0|6:45000.5=2023-03-15T12:00:00|東京;.");
    ExpectBatches(path, {},
                  "n g,b b,d tsu:,m u:0.1|true|-2208988800000000|1.5;-|-|-|0;"
                  "-1e+300|false|1678881600000000|東京;.");
    EXPECT_TRUE(
        COpened(path, {.hasNoHeader = true}).Batches(0).starts_with("F1 u,F2 u,F3 u,F4 u:n|b|d|m;0.1|-1|1900"));
}

TEST_F(CInterface, DatabasesGiveEveryTypeWholeAndNullsAtEveryPositionOfTheirBits) {
    using enum EAccess;
    const std::string text = Repeat("東京", 20000), bytes = Repeat("\0\xFF\x80"s, 40000);
    const std::string guid("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF", 16);
    const std::string guidText = "{00112233-4455-6677-8899-AABBCCDDEEFF}", decimal = "-12345678901234567890123456";
    const std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    // 0100-01-01 18:00, 1899-12-29 06:00, 1899-12-30, 2023-03-15 12:00, the same day with milliseconds and the one
    // that the time of the day before is rounded to.
    const std::pair<double, std::string> dates[] = {{-657434.75, "-59011394400000000"},
                                                    {-1.25, "-2209226400000000"},
                                                    {0, "-2209161600000000"},
                                                    {45000.5, "1678881600000000"},
                                                    {45000.123456789, "1678849066667000"},
                                                    {44999.9999999999, "1678838400000000"}};
    std::vector<SAccessColumn> columns;
    for (const EAccess type : {Boolean, Byte, Integer, Long, Currency, Single, Double, Date, Binary, Text, Ole, Memo,
                               Guid, Numeric, Large})
        columns.push_back({.strName = std::string(1, static_cast<char>('a' + columns.size())),
                           .type = type,
                           .scale = static_cast<unsigned char>(type == Numeric ? 2 : 0)});
    CAccessWriter writer(EJet::Ace16);
    CAccessTable& table = writer.AddTable("価格", columns);
    std::string rows;
    for (std::int64_t i = 0; i < 70; ++i) {
        const bool isOdd = i % 2 != 0;
        if (std::set<std::int64_t>{0, 7, 8, 9, 63, 64}.contains(i)) {
            table.Add({isOdd, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}});
            rows += (isOdd ? "true" : "false") + Repeat("|-", 14) + ';';
            continue;
        }
        const auto& [date, microseconds] = dates[i % static_cast<std::int64_t>(std::size(dates))];
        const std::string &ole = i == 2 ? bytes : guid, &memo = i == 3 ? text : guidText;
        AccessRow values = {isOdd, std::int64_t{255}, std::int64_t{-32768}, i, -i, 0.5, 1e300, date};
        for (const AccessValue& value : AccessRow{guid, "é", ole, memo, guid, decimal, smallest})
            values.push_back(value);
        table.Add(values);
        for (const std::string& value :
             {std::string(isOdd ? "true|255|-32768" : "false|255|-32768"), std::to_string(i), std::to_string(-i),
              "0.5|1e+300"s, microseconds, guid, "é"s, ole, memo, guidText, decimal, std::to_string(smallest)})
            rows.append(value).append("|");
        rows.back() = ';';
    }
    const std::string path = m_folder.WriteFile("é.accdb", writer.Finish().Bytes());
    ExpectBatches(path, {}, "a b,b l,c l,d l,e d:19,4,f g,g g,h tsu:,i z,j u,k z,l u,m u,n d:26,2,o l:" + rows + '.');
    const std::string texts = COpened(path, {}, "価格").Rows();
    const std::string first = "0|-|-|-|-|-|-|-|-|-|-|-|-|-|-;-1|255|-32768|1|-0.0001|0.5|1E+300|1899/12/29 6:00:00|"
                              "0x33221100554477668899AABBCCDDEEFF|é|0x33221100554477668899AABBCCDDEEFF|" +
                              guidText + '|' + guidText + "|-123456789012345678901234.56|-9223372036854775808;0|";
    EXPECT_EQ(texts.substr(texts.find(':') + 1, first.size()), first);
    EXPECT_NE(texts.find('|' + text + '|'), std::string::npos);
    EXPECT_NE(texts.find("|0x00FF8000FF80"), std::string::npos);
    const std::string values = COpened(path, {}, "価格").Values();
    const std::string typed = "1:0|-|-|-|-|-|-|-|-|-|-|-|-|-|-;1:1|2:255|2:-32768|2:1|5:-0.0001|3:0.5|"
                              "4:1.0000000000000001e+300|6:-1.25=1899-12-29T06:00:00|8:" +
                              guid + "|é|8:" + guid + '|' + guidText + '|' + guidText +
                              "|5:-123456789012345678901234.56|2:-9223372036854775808;1:0|";
    EXPECT_EQ(values.substr(values.find(':') + 1, typed.size()), typed);
    EXPECT_NE(values.find("|6:0=00:00:00|"), std::string::npos);
    EXPECT_NE(values.find("|6:-657434.75=0100-01-01T18:00:00|"), std::string::npos);
    EXPECT_NE(values.find("=2023-03-15T02:57:46.667|"), std::string::npos);
    EXPECT_NE(values.find("=2023-03-15T00:00:00|"), std::string::npos);
    EXPECT_NE(values.find("|8:" + bytes + '|'), std::string::npos);
    EXPECT_NE(values.find('|' + text + '|'), std::string::npos);
}

TEST_F(CInterface, AValueThatItsColumnCannotHaveEndsTheBatches) {
    const struct {
        SAccessColumn column;
        AccessValue value;
        std::string failure;
        std::string values;
    } cases[] = {
        {{"n", EAccess::Numeric, 2},
         std::string(27, '9'),
         "a decimal number has more digits than its column",
         "n:-;5:" + std::string(25, '9') + ".99;."},
        {{"d", EAccess::Date}, 4e6, "a date is out of range", "d:-;4:4000000;."},
    };
    for (const auto& c : cases) {
        CAccessWriter writer(EJet::Jet4);
        writer.AddTable("T", {c.column}).Add({AccessValue()}).Add({c.value});
        const std::string path = m_folder.WriteFile("a.mdb", writer.Finish().Bytes());
        const std::string batches = COpened(path).Batches(0);
        EXPECT_TRUE(batches.ends_with("table \"T\": row 2: column 1: " + c.failure)) << batches;
        EXPECT_EQ(COpened(path).Values(), c.values);
    }
}

TEST_F(CInterface, EveryFailureHasItsStatusAndSaysWhatWhereAndWhy) {
    const std::string samples = TQC_SAMPLES "/", text = m_folder.WriteFile("a.csv", "a\n1\n");
    const auto write = [this](const char* name, std::string_view content) {
        return m_folder.WriteFile(name, content);
    };
    CAccessWriter several(EJet::Jet4);
    for (const char* name : {"Orders", "orders", "Prices"})
        several.AddTable(name, {{"Id", EAccess::Long}});
    const std::string tables = write("a.mdb", several.Finish().Bytes());
    const struct {
        std::string path;
        const char* outcome; ///< how it begins
        SSetting setting = {};
        const char* table = nullptr;
    } cases[] = {
        {text, "!2 unknown encoding \"ebcdic\"", {"ebcdic"}},
        {text, "!2 the size of the options is not set", {.size = sizeof(std::size_t) - 1}},
        {text, "!2 unknown type", {.type = static_cast<tqc_type>(9)}},
        {text, "!2 fixed-length text needs the widths of its columns", {.type = TQC_FIXED}},
        {text, "!6 the widths of the columns and their number", {.type = TQC_FIXED, .widths = {65535}}},
        {m_folder.Path("none.csv"), "!3 "},
        {m_folder.Path(), "!3 "},
        {text, "!3 no table \"x\"", {}, "x"},
        {tables, "!3 several tables are named like \"ORDERS\"; there are: Orders, orders, Prices", {}, "ORDERS"},
        {tables, "!3 no table \"item\"; there are: Orders, orders, Prices", {}, "item"},
        {tables, "Id:.", {}, "prices"},
        {samples + "prices-locked.xtqf", "!4 the password is missing or wrong"},
        {samples + "prices-locked.xtqf", "!4 the password is missing or wrong", {.password = "no"}},
        {samples + "prices-locked.xtqf", "商品,店舗", {.password = "secret"}},
        {samples + "stock-locked.accdb", "!4 "},
        {samples + "stock-locked.accdb", "!4 ", {.password = "no"}},
        {samples + "stock-locked.accdb", "Id,Part,", {.password = "secret"}, "PARTS"},
        {samples + "prices-locked.xlsx", "!4 "},
        {samples + "prices-locked.xlsx", "!4 ", {.password = "no"}},
        {samples + "prices-locked.xlsx", "商品,店舗", {.password = "secret"}},
        {write("b.xlsx", "PK\x03\x04 damaged"), "!5 "},
        {write("b.xtqf", "damaged"), "!5 the package is damaged"},
        {write("u.csv", "\xFF\xFE_"), "!5 UTF-16 text; convert it to UTF-8"},
        {write("n.csv", "a\0b"s), "!5 it contains NUL bytes"},
        {m_folder.Path("n.csv"), "a", {.type = TQC_CSV}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(COpened(c.path, c.setting, c.table).Rows().substr(0, std::strlen(c.outcome)), c.outcome) << c.path;
}

/// How a source ended whose first row was read as texts and the others by a stream: the status of the first failure
/// (an errno code of the stream counts from 1000), and the rows before it. It makes no assertions, as they allocate.
std::pair<int, std::int64_t> Live(const char* path, const tqc_options& options) {
    tqc_source* source = nullptr;
    tqc_rows* rows = nullptr;
    tqc_error* error = nullptr;
    ArrowArrayStream stream{};
    const tqc_field* fields = nullptr;
    std::size_t count = 0;
    int status = tqc_open(path, &options, &source, &error);
    if (status == TQC_OK)
        status = tqc_open_rows(source, 0, &rows, &error);
    if (status == TQC_OK)
        status = tqc_next_row(rows, &fields, &count, &error);
    if (status == TQC_OK)
        status = tqc_export_stream(rows, 1000, &stream, &error);
    tqc_close_source(source);
    const bool isExplained = status == TQC_OK || (tqc_error_status(error) == status && *tqc_error_text(error) != 0);
    tqc_free_error(error);
    if (status != TQC_OK) {
        tqc_close_rows(rows);
        return {isExplained ? status : -1, 0};
    }
    ArrowSchema schema{};
    int code = stream.get_schema(&stream, &schema);
    if (code == 0)
        schema.release(&schema);
    std::int64_t read = 1;
    for (bool isOpen = code == 0; isOpen;) {
        ArrowArray batch{};
        code = stream.get_next(&stream, &batch);
        isOpen = code == 0 && batch.release != nullptr;
        read += batch.length;
        if (isOpen)
            batch.release(&batch);
    }
    stream.release(&stream);
    return {code == 0 ? TQC_OK : 1000 + code, read};
}

TEST_F(CInterface, LackOfMemoryIsReportedAndLeavesNothing) {
    SXlsxParts parts;
    parts.strRows = Repeat("<row><c><v>1</v></c><c t='str'><v>x</v></c></row>", 3000);
    const std::string text = "a,b\n" + Repeat("\x82\xA0,\"x\"\n", 3000), samples = TQC_SAMPLES "/";
    const std::string package = MakeZip({{.name = "TqData\\SourceFile.csv", .content = text}});
    const struct {
        std::string path;
        SSetting setting;
        std::int64_t rows;
    } cases[] = {
        {m_folder.WriteFile("a.csv", text), {"cp932"}, 3000},
        {m_folder.WriteFile("a.txt", "ab1\ncd2\n"), {.type = TQC_FIXED, .widths = {2, 1}, .hasNoHeader = true}, 2},
        {m_folder.WriteFile("a.xtqf", package), {"cp932"}, 3000},
        {m_folder.WriteFile("a.xlsx", parts.File()), {.hasNoHeader = true}, 3000},
        {samples + "prices.xls", {}, 3},
        {samples + "stock.mdb", {}, 3},
        {samples + "stock-locked.accdb", {.password = "secret"}, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const tqc_options options = c.setting.Get();
        const std::pair<int, std::int64_t> good = {TQC_OK, c.rows};
        EXPECT_EQ(Live(c.path.c_str(), options), good);
        std::size_t wrong = 0, left = 0;
        const std::size_t faults = Faults::ForEachFailure(Call::Allocate, 0, [&](std::size_t nth) {
            const std::ptrdiff_t blocks = Faults::LiveAllocations();
            const auto outcome = Live(c.path.c_str(), options);
            left = Faults::LiveAllocations() == blocks ? left : nth;
            if (outcome != good && outcome.first != TQC_NO_MEMORY && outcome.first != 1000 + ENOMEM)
                wrong = nth;
        });
        EXPECT_GT(faults, 10U);
        EXPECT_EQ(left, 0U) << "the last allocation that leaked";
        EXPECT_EQ(wrong, 0U) << "the last allocation with another outcome";
    }
}

TEST_F(CInterface, AFailureIsFinalInStreamsToo) {
    const std::string path = m_folder.WriteFile("a.csv", Repeat("a,b\n", 40000));
    COpened failing(path);
    {
        const Faults::Scope fault(Call::Read, 1, EIO);
        EXPECT_EQ(failing.Batches(20000), "a u,b u:!7 reading failed after row 16000: the device failed");
    }
    EXPECT_EQ(failing.Rows(), "a,b:!7 reading has failed before");
    const struct {
        std::string content;
        std::vector<std::int64_t> lengths; ///< of batches of two rows, or errno codes below 0
        const char* sentence;
    } cases[] = {
        {"a\n1\n2\n3\n", {2, 1, 0, 0}, ""},
        {"a\n1\n2\n1,2\n", {2, -EIO, -EIO, -EIO}, "reading has failed before"},
        {"a\n1\n2\n\xFF\n", {2, -EILSEQ, -EILSEQ, -EILSEQ}, "reading has failed before"},
    };
    for (const auto& c : cases) {
        COpened opened(m_folder.WriteFile("s.csv", c.content), {"utf-8"});
        ArrowArrayStream stream{};
        ASSERT_EQ(tqc_export_stream(opened.Release(), 2, &stream, nullptr), TQC_OK);
        for (const std::int64_t length : c.lengths) {
            ArrowArray batch{};
            const int code = stream.get_next(&stream, &batch);
            EXPECT_EQ(code == 0 ? batch.length : -code, length);
            if (batch.release != nullptr)
                batch.release(&batch);
        }
        const char* const error = stream.get_last_error(&stream);
        EXPECT_TRUE(std::string(error == nullptr ? "" : error).ends_with(c.sentence));
        stream.release(&stream);
        EXPECT_EQ(stream.release, nullptr);
    }
}

#if !defined(_WIN32)
TEST_F(CInterface, AStreamThatIsReleasedEarlyRemovesTheFilesOfItsPackage) {
    const std::string unpacked = m_folder.MakeFolder("é東京");
    ::setenv("TMPDIR", unpacked.c_str(), 1);
    const auto countFiles = [&] {
        const std::filesystem::recursive_directory_iterator entries(std::u8string(unpacked.begin(), unpacked.end()));
        return std::ranges::count_if(entries, [](const auto& entry) { return entry.is_regular_file(); });
    };
    COpened package(m_folder.WriteFile("a.xtqf", MakeZip({{.name = "TqData\\SourceFile.csv", .content = "a\n1\n"}})));
    ArrowArrayStream stream{};
    ASSERT_EQ(tqc_export_stream(package.Release(), 0, &stream, nullptr), TQC_OK);
    EXPECT_EQ(countFiles(), 1);
    stream.release(&stream);
    EXPECT_EQ(countFiles(), 0);
    ::unsetenv("TMPDIR");
}
#endif

TEST_F(CInterface, MissingArgumentsAndPositionsAreRefused) {
    const std::string path = m_folder.WriteFile("a.csv", "\x8F\xA4;b\n");
    tqc_source* source = nullptr;
    tqc_rows* rows = nullptr;
    tqc_error* error = nullptr;
    ASSERT_EQ(tqc_open(path.c_str(), nullptr, &source, &error), TQC_OK);
    ASSERT_EQ(tqc_open_rows(source, 0, &rows, &error), TQC_OK);
    std::size_t count = 0;
    for (const tqc_status status :
         {tqc_open(nullptr, nullptr, &source, &error), tqc_open("", nullptr, &source, &error),
          tqc_open(path.c_str(), nullptr, nullptr, &error), tqc_open_rows(source, 0, nullptr, &error),
          tqc_find_table(source, nullptr, &count, &error), tqc_find_table(source, "", nullptr, &error),
          tqc_next_row(rows, nullptr, &count, &error), tqc_next_values(rows, nullptr, &count, &error),
          tqc_next_batch(rows, 0, nullptr, &error), tqc_get_schema(rows, nullptr, &error),
          tqc_export_stream(rows, 0, nullptr, &error), tqc_open_writer(nullptr, nullptr, nullptr, &error)})
        EXPECT_TRUE(status == TQC_INVALID_ARGUMENT && tqc_error_status(error) == TQC_INVALID_ARGUMENT);
    EXPECT_EQ(tqc_open_rows(source, 1, &rows, &error), TQC_NOT_FOUND);
    EXPECT_TRUE(tqc_table_name(source, 1) == nullptr && tqc_column_name(rows, 1) == nullptr);
    EXPECT_EQ(tqc_column_type(rows, 1), 0);
    EXPECT_EQ(tqc_source_type(source), TQC_CSV);
    EXPECT_STREQ(tqc_source_encoding(source), "shift_jis");
    EXPECT_EQ(tqc_row_count(rows), -1);
    const tqc_field* fields = nullptr;
    EXPECT_EQ(tqc_next_row(rows, &fields, &count, &error), TQC_END);
    EXPECT_EQ(tqc_progress(rows), 1000);
    tqc_free_error(error);
    tqc_close_rows(rows);
    tqc_close_source(source);
}

TEST_F(CInterface, ThreadsReadAndWriteInEncodingsOfTheirOwn) {
    const std::string japanese = m_folder.WriteFile("j.csv", "a\n" + Repeat("\x82\xA0\n", 200));
    const std::string western = m_folder.WriteFile("w.csv", "a\n" + Repeat("\x82\xA0\n", 200));
    const auto read = [](const std::string& path, const char* encoding, const std::string& expected) {
        for (int round = 0; round < 200; ++round) {
            ASSERT_EQ(COpened(path, {encoding}).Rows(), expected);
            ASSERT_EQ(COpened(path, {encoding}).Batches(7), "a u" + expected.substr(1));
        }
    };
    std::thread one(read, japanese, "cp932", "a:" + Repeat("あ;", 200) + '.');
    std::thread other(read, western, "cp1252", "a:" + Repeat("‚\xC2\xA0;", 200) + '.');
    one.join();
    other.join();
}

TEST_F(CInterface, WritesWholeRowsInTheEncodingOfTheOutput) {
    using Row = std::vector<const char*>;
    const std::string longest(65535, 'x'), tooLong(65536, 'x');
    const struct {
        const char* title;
        const char* encoding;
        char separator;
        char hasOnlyLf;
        std::vector<std::pair<Row, tqc_status>> rows;
        std::string content;
    } cases[] = {
        {"quotes", nullptr, 0, 0, {{{"a,b", "c\"d", nullptr, " g "}, TQC_OK}}, "\"a,b\",\"c\"\"d\",, g \r\n"},
        {"line ends", nullptr, 0, 0, {{{"a\r\nb", "c\rd"}, TQC_OK}, {{}, TQC_OK}}, "\"a\r\nb\",\"c\rd\"\r\n\r\n"},
        {"separator and line end", nullptr, ';', 1, {{{"a,b", "c;d", "東"}, TQC_OK}}, "a,b;\"c;d\";東\n"},
        {"nothing", nullptr, 0, 1, {{{nullptr, ""}, TQC_OK}}, ",\n"},
        {"Shift_JIS", "cp932", 0, 1, {{{"ソ,"}, TQC_OK}, {{"x", "é"}, TQC_INVALID_TEXT}}, "\"\x83\x5C,\"\n"},
        {"1252 without best fits", "cp1252", 0, 1, {{{"é€"}, TQC_OK}, {{"Ā"}, TQC_INVALID_TEXT}}, "\xE9\x80\n"},
        {"invalid UTF-8", nullptr, 0, 1, {{{"a", "\xC3"}, TQC_INVALID_TEXT}, {{"b"}, TQC_OK}}, "b\n"},
        {"length", nullptr, 0, 1, {{{longest.c_str()}, TQC_OK}, {{"a", tooLong.c_str()}, TQC_LIMIT}}, longest + "\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.title);
        const std::string path = m_folder.Path("é商.csv");
        const tqc_writer_options options = {sizeof options, c.encoding, c.separator, c.hasOnlyLf};
        tqc_writer* writer = nullptr;
        tqc_error* error = nullptr;
        ASSERT_EQ(tqc_open_writer(path.c_str(), &options, &writer, &error), TQC_OK);
        for (const auto& [row, status] : c.rows) {
            std::vector<tqc_field> fields;
            for (const char* text : row)
                fields.push_back({text, text == nullptr ? 3 : std::strlen(text)});
            EXPECT_EQ(tqc_write_row(writer, fields.data(), fields.size(), &error), status);
            const std::string expected = status == TQC_OK
                                             ? "no error object"
                                             : "!" + std::to_string(status) + " field " + std::to_string(row.size());
            EXPECT_TRUE(Failure(status, error, path).starts_with(expected));
        }
        EXPECT_EQ(tqc_close_writer(writer, &error), TQC_OK);
        EXPECT_EQ(m_folder.ReadFile("é商.csv"), c.content);
    }

    const struct {
        std::string path;
        const char* encoding;
        Call call;
        const char* failure;
    } failures[] = {
        {m_folder.Path("none/a.csv"), nullptr, Call::Allocate, "!7 no such folder"},
        {m_folder.Path("a.csv"), "ebcdic", Call::Allocate, "!2 unknown encoding"},
        {m_folder.Path("b.csv"), nullptr, Call::Write, "!7 no space left on the device"},
    };
    for (const auto& c : failures) {
        const tqc_writer_options options = {sizeof options, c.encoding, 0, 0};
        tqc_writer* writer = nullptr;
        tqc_error* error = nullptr;
        const tqc_field field = {"a", 1};
        tqc_status status = tqc_open_writer(c.path.c_str(), &options, &writer, &error);
        if (status == TQC_OK) {
            const Faults::Scope fault(c.call, 1, ENOSPC);
            EXPECT_EQ(tqc_write_row(writer, &field, 1, &error), TQC_OK);
            status = tqc_close_writer(writer, &error);
        }
        EXPECT_EQ(Failure(status, error, c.path), c.failure);
    }
}

} // namespace
} // namespace NSTQ::Tests
