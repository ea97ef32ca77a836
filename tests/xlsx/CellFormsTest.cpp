// The fast ways through the cells of a sheet against the general scanner: on sheets of random forms, with and without
// damage, and with the end of the buffer at each byte. SHEETS in the environment is their number.
#include "providers/common/CSourceError.h"
#include "providers/xlsx/CSheetScanner.h"
#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <random>

namespace NSTQ::Tests {
namespace {

using namespace Providers;

class CTextStream : public IByteStream {
public:
    explicit CTextStream(std::string text) : m_text(std::move(text)) {}
    std::size_t Read(std::span<unsigned char> target) override {
        const std::size_t count = std::min(target.size(), m_text.size() - m_at);
        std::copy_n(m_text.begin() + static_cast<std::ptrdiff_t>(m_at), count, target.begin());
        m_at += count;
        return count;
    }

private:
    std::string m_text;
    std::size_t m_at = 0;
};

/// All cells and what ends them.
std::string CellsOf(const std::string& sheet) {
    std::string cells;
    try {
        CSheetScanner scanner(CXmlScanner(std::make_unique<CTextStream>(sheet), "part"));
        for (SCell cell = {}; scanner.Next(cell);)
            cells += std::to_string(cell.position.row) + "," + std::to_string(cell.position.column) + "," +
                     std::to_string(static_cast<int>(cell.kind)) + "," + std::to_string(cell.style) + "=" +
                     std::string(cell.text) + "\n";
        return cells + "end";
    } catch (const CSourceError& error) {
        return cells + error.what();
    }
}

/// The same sheet, with a second blank in its tags, which only the general scanner accepts.
std::string ForGeneralScanner(std::string sheet) {
    for (const std::string_view tag : {"<c ", "<row "})
        for (std::size_t at = sheet.find(tag); at != std::string::npos; at = sheet.find(tag, at + tag.size() + 1))
            sheet.insert(at + tag.size(), " ");
    return sheet;
}

class CSheetMaker {
public:
    std::string Make() {
        std::string rows;
        const unsigned first = Number(3) == 0 ? 1 : Number(2) == 0 ? 8 : 1048571;
        const std::string_view tagEnd = Pick(tagEnds);
        std::array<std::string_view, 30> forms;
        for (std::string_view& form : forms)
            form = Number(9) == 0 ? Pick(oddForms) : Pick(usualForms);
        for (unsigned row = first; row < first + 8; ++row) {
            const std::string number = std::to_string(row);
            rows += Number(20) == 0 ? std::string(Pick(oddRows)) : "<row r=\"" + number + std::string(tagEnd);
            for (unsigned column = Number(4) == 0 ? 1 : 0; column < forms.size(); column += Number(9) == 0 ? 2 : 1)
                rows += Cell(Number(12) == 0 ? Pick(oddForms) : forms[column], NameOf(column) + number);
            rows += "</row>";
        }
        return "<worksheet><sheetData>" + rows + "</sheetData></worksheet>";
    }

    void Damage(std::string& sheet) {
        constexpr std::string_view bytes = "<>/\"=&; crstvi019AZ\r\n\x80#-.";
        const std::size_t at = Number(static_cast<unsigned>(sheet.size()));
        const char byte = bytes[Number(bytes.size())];
        switch (Number(4)) {
        case 0:
            sheet[at] = byte;
            break;
        case 1:
            sheet.insert(at, 1, byte);
            break;
        case 2:
            sheet.erase(at, 1 + Number(9));
            break;
        default:
            sheet.resize(Number(3) == 0 ? at : sheet.size());
        }
    }

private:
    static constexpr std::string_view tagEnds[] = {"\">", "\" spans=\"1:3\" ht=\"15\">", "\" a='>'>", "\" />", "'>"};
    static constexpr std::string_view oddRows[] = {
        "<row>",           "<row r=\"7\">",  "<row r=\"07\">",   "<row s=\"1\">",
        "<x:row r=\"9\">", "<row r=\"3\"/>", "\n<row r=\"9\" >", "<row r=\"\">"};
    // '@' is the reference, '*' a content.
    static constexpr std::string_view usualForms[] = {
        R"(<c r="@"><v>*</v></c>)",
        R"(<c r="@" s="12"><v>*</v></c>)",
        R"(<c r="@" s="1" t="s"><v>*</v></c>)",
        R"(<c r="@" t="inlineStr"><is><t>*</t></is></c>)",
        R"(<c r="@" s="16777215" t="inlineStr"><is><t>*</t></is></c>)",
        R"(<c r="@" t="str"><v>*</v></c>)",
        R"(<c r="@" t="b"><v>1</v></c>)",
        R"(<c r="@" s="3"/>)",
        R"(<c r="@" s="4"><f>@*2&gt;1</f><v>*</v></c>)",
        R"(<c r="@"><f t="shared" si="0"/><v>*</v></c>)",
    };
    static constexpr std::string_view oddForms[] = {
        R"(<c s="2" r="@"><v>*</v></c>)",
        R"(<c r="A1" r="@"><v>*</v></c>)",
        R"(<c r="@" r="C3"><v>*</v></c>)",
        R"(<c r="C2"><v>*</v></c>)",
        R"(<c r="ABC9"><v>*</v></c>)",
        R"(<c r="a5"><v>*</v></c>)",
        R"(<c><v>*</v></c>)",
        R"(<c r="0"><v>*</v></c>)",
        R"(<c r="@"><f>@</f><v>*</v></c>)",
        R"(<c r="@"><f>*</f><is><t>*</t></is></c>)",
        R"(<c r="@" t="str"><f t="shared" ref="A1:B@" si="0">@*1</f><v>*</v></c>)",
        R"(<c r="@"><f/><v>*</v></c>)",
        R"(<c r="@"><f>@</f></c>)",
        R"(<c r="@"><f a='1'>@</f><v>*</v></c>)",
        R"(<c r="@"><f>1<!-- -->2</f><v>*</v></c>)",
        R"(<c r="@"><formula>1</formula><v>*</v></c>)",
        R"(<c r="@" ><v>*</v></c>)",
        R"(<c r='@'><v>*</v></c>)",
        R"(<c r="@"><v></v></c>)",
        R"(<c r="@"><v> *</v></c>)",
        R"(<c r="@"><v/></c>)",
        R"(<c r="@"></c>)",
        R"(<c r="@" s=""><v>*</v></c>)",
        R"(<c r="@" t="unknown"><v>*</v></c>)",
        R"(<c r="@" t="inlineStr"><is><t xml:space="preserve"> * </t></is></c>)",
        R"(<c r="@" t="inlineStr"><is><r><t>*</t></r></is></c>)",
        R"(<c r="@" t="e"><v>#N/A</v></c> <!-- * -->)",
        R"(<c r="@" t="inlineStr"><v>*</v><is><t>*</t></is></c>)",
        R"(</row><row r="9" ht="15">)",
    };
    static constexpr std::string_view contents[] = {
        "0",         "12",
        "-1.5",      "1234567",
        "12345678",  "37276.77",
        "1E5",       "123456789012345678",
        "a",         "text of a row",
        "a b  c",    "",
        " ",         "12 ",
        "&lt;",      "x&amp;y",
        "a\rb",      "a\r\nb",
        "a\tb",      "\xE3\x81\x82",
        "1\xC2\xA0", "a text that is longer than two words of the comparison, and than four"};

    unsigned Number(std::size_t below) { return static_cast<unsigned>(m_random() % below); }
    template <std::size_t count>
    std::string_view Pick(const std::string_view (&table)[count]) {
        return table[Number(count)];
    }
    static std::string NameOf(unsigned column) {
        const std::string last(1, static_cast<char>('A' + column % 26));
        return column < 26 ? last : static_cast<char>('A' + column / 26 - 1) + last;
    }
    std::string Cell(std::string_view form, std::string_view reference) {
        std::string cell;
        for (const char character : form) {
            const std::string_view part(&character, 1);
            cell += part == "@" ? reference : part == "*" ? Pick(contents) : part;
        }
        return cell;
    }

    std::mt19937 m_random{1};
};

TEST(CellForms, GiveWhatTheGeneralScannerGives) {
    const char* const wanted = std::getenv("SHEETS");
    const int count = wanted == nullptr ? 1500 : std::atoi(wanted);
    CSheetMaker maker;
    for (int i = 0; i < count; ++i) {
        std::string sheet = maker.Make();
        ASSERT_EQ(CellsOf(sheet), CellsOf(ForGeneralScanner(sheet))) << sheet;
        maker.Damage(sheet);
        ASSERT_EQ(CellsOf(sheet), CellsOf(ForGeneralScanner(sheet))) << sheet;
    }
}

TEST(CellForms, TheEndOfTheBufferMayBeAnywhere) {
    constexpr std::string_view begin = "<worksheet>", cells = R"(<c r="A@" s="1"><v>1.5</v></c><c r="B@" s="1"/>)"
                                                              R"(<c r="C@" t="inlineStr"><is><t>a text</t></is></c>)";
    std::string rows = "<sheetData>";
    for (const char* const row : {"1", "2", "3", "4"}) {
        rows += "<row r=\"" + std::string(row) + "\" ht=\"15\">";
        for (const char character : cells)
            rows += character == '@' ? row : std::string(1, character);
        rows += "</row>";
    }
    rows += "</sheetData></worksheet>";
    const std::string expected = CellsOf(std::string(begin) + rows);
    ASSERT_EQ(expected.size(), 4 * std::string_view("1,1,1,1=1.5\n1,3,4,0=a text\n").size() + 3);
    constexpr std::size_t buffer = 1U << 17;
    for (std::size_t before = buffer - rows.size(); before < buffer; ++before)
        ASSERT_EQ(CellsOf(std::string(begin) + std::string(before - begin.size(), ' ') + rows), expected) << before;
}

} // namespace
} // namespace NSTQ::Tests
