// Random cells of sheets and tables under every code page and several user locales.
#include "access/AccessHarness.h"
#include "providers/workbook/CSheetRows.h"
#include "support/CPlainTextCheck.h"
#include "support/Chosen.h"
#include "support/Values.h"
#include "tqcAccess/UserLocale.h"

#include <bit>
#include <cmath>
#include <random>

namespace NSTQ::Tests {
namespace {

using namespace Providers;

constexpr unsigned pages[] = {932, 936, 949, 950, 1252, 65001};
constexpr Platform::SUserLocale locales[] = {
    {},
    {"d.M.yy", "tt hh:mm", ',', Platform::ENumberDigits::Full, "yes", ""},
    {" yyyy-MM-dd", "h 'o'clock' m:ss ", '.', Platform::ENumberDigits::Default, " yes", "no "},
};

class CRandomCells {
public:
    explicit CRandomCells(unsigned seed) : m_random(seed) {}

    std::size_t Below(std::size_t bound) { return m_random() % bound; }

    /// Of every size, short decimals, ties between two roundings, and the neighbours of each.
    double Number() {
        const auto whole = static_cast<double>(m_random() >> Below(64));
        const double decimal = whole / std::pow(10, static_cast<double>(Below(23)));
        const double numbers[] = {whole, decimal, std::ldexp(whole, -static_cast<int>(Below(60))), decimal,
                                  std::bit_cast<double>(m_random())};
        const double number = numbers[Below(std::size(numbers))];
        const double near[] = {number, -number, std::nextafter(number, 0), std::nextafter(number, 1e300)};
        return near[Below(std::size(near))];
    }
    /// Digits as a sheet may hold them, right and wrong.
    std::string Digits() {
        std::string text(PartOf({"", "", "", "-", "+", "--"}));
        text += PartOf({"", "", "0", "0.", "0.000", "0.0000", "00", "."});
        for (std::size_t count = Below(Below(4) == 0 ? 19 : 8); count > 0; --count)
            text += static_cast<char>('0' + Below(10));
        if (Below(2) == 0)
            text.insert(Below(text.size() + 1), 1, '.');
        return text += PartOf({"", "", "", "", "", "0", "E5", "E-5", "E400", "e+1", " ", "x"});
    }
    /// At and beside a second of a day of the years 100 to 9999, some beyond.
    double Day() {
        const double fraction = static_cast<double>(Below(86401 * 2)) / (86400 * 2) + PartOf({0.0, 0.0, 1e-9, -1e-9});
        return std::floor(PartOf({0.0, 1.0, 45000.0, -657434.0, 2958465.0, Number()})) + PartOf({0.0, fraction});
    }
    std::string Text() {
        std::string text;
        for (std::size_t count = Below(6); count > 0; --count)
            text += Below(3) == 0 ? std::string(PartOf(odd)) : std::string(Below(30), 'a').append("~ b");
        return text;
    }

private:
    static constexpr std::initializer_list<const char*> odd = {" ",
                                                               "  ",
                                                               "\t",
                                                               "\r\n",
                                                               "\x01",
                                                               "\x1F",
                                                               "\x7F",
                                                               "_x000D_",
                                                               "\xC3\xA9",
                                                               "\xE3\x81\x82\xE4\xBA\x9C",
                                                               "\xF0\x9F\x98\x80",
                                                               "\xC2\xA0",
                                                               "\xE3\x80\x80",
                                                               "\xE2\x80\x82",
                                                               "\xC4\x80",
                                                               "\xE4\xB8\x80"};

    template <class TPart>
    TPart PartOf(std::initializer_list<TPart> parts) {
        return parts.begin()[Below(parts.size())];
    }

    std::mt19937_64 m_random;
};

/// A workbook whose cells and shared texts are random.
class CRandomBook : public IWorkbook {
public:
    static constexpr std::uint32_t rows = 250;
    static constexpr std::uint32_t columns = 20;
    static constexpr std::uint32_t texts = 3000;
    static constexpr std::uint32_t styles = 8;

    explicit CRandomBook(unsigned seed) : m_seed(seed), m_isDate1904(seed % 2 == 0) {
        CRandomCells cells(seed);
        for (std::uint32_t i = 0; i < texts; ++i)
            m_texts.Add(cells.Below(9) == 0 ? cells.Text() + "\xE3\x81" : cells.Text());
        m_formats.AddCode(200, "0;;yy");
        for (const std::uint32_t format : {0U, 0U, 14U, 20U, 22U, 46U, 200U})
            m_formats.AddStyle(format);
    }
    const std::string& GetPath() const override { return m_path; }
    const std::vector<std::u16string>& GetSheetNames() const override { return m_names; }
    const std::vector<SNamedRange>& GetNames() const override { return m_ranges; }
    bool IsDate1904() const override { return m_isDate1904; }
    std::unique_ptr<ICellSource> OpenCells(std::size_t) override { return std::make_unique<CCells>(m_seed); }
    EDateKind GetDateKind(std::uint32_t style, double number) const override {
        return m_formats.GetKind(style, number);
    }
    std::optional<EDateKind> GetCommonDateKind(std::uint32_t style) const override {
        return m_formats.GetCommonKind(style);
    }
    const CTextPool& GetSharedTexts() const override { return m_texts; }

private:
    class CCells : public ICellSource {
    public:
        explicit CCells(unsigned seed) : m_cells(seed + 1) {}
        bool Next(SCell& cell) override {
            m_place += 1 + (m_cells.Below(8) == 0 ? 1 : 0);
            cell = {{m_place / columns + 1, m_place % columns + 1}, ECellKind(m_cells.Below(9)), {}, {}, 0, 0};
            cell.style = static_cast<std::uint32_t>(m_cells.Below(styles));
            cell.number = m_cells.Below(2) == 0 ? m_cells.Number() : m_cells.Day();
            cell.index = static_cast<std::uint32_t>(m_cells.Below(texts + 1)); // one has no text
            m_text = TextOf(cell.kind);
            cell.text = m_text;
            return cell.position.row <= rows;
        }

    private:
        std::string TextOf(ECellKind kind) {
            switch (kind) {
            case ECellKind::NumberDigits:
                return m_cells.Digits();
            case ECellKind::SharedDigits:
                return std::to_string(m_cells.Below(texts + 1));
            case ECellKind::Boolean:
                return std::to_string(m_cells.Below(3));
            case ECellKind::WideText:
                return Utf16Bytes(m_cells.Text());
            case ECellKind::IsoDate:
                return m_cells.Below(2) == 0 ? "2024-02-29T23:59:59.5" : m_cells.Digits();
            default:
                return m_cells.Text();
            }
        }
        CRandomCells m_cells;
        std::uint32_t m_place = 0;
        std::string m_text;
    };

    unsigned m_seed;
    bool m_isDate1904;
    std::string m_path = "book";
    std::vector<std::u16string> m_names;
    std::vector<SNamedRange> m_ranges;
    CNumberFormats m_formats;
    CTextPool m_texts;
};

std::unique_ptr<Platform::IRowSource> RandomSheet(unsigned seed) {
    const auto book = std::make_shared<CRandomBook>(seed);
    const SCellRange range = {{1, 1}, {CRandomBook::rows, CRandomBook::columns}};
    return std::make_unique<CSheetRows>(book, book->OpenCells(0), range,
                                        std::vector<SFieldType>(CRandomBook::columns), false);
}

std::unique_ptr<Platform::IRowSource> RandomTable(unsigned seed) {
    using enum EAccess;
    CAccessWriter writer(seed % 4 == 0 ? EJet::Jet3 : EJet::Jet4);
    CAccessTable& table = writer.AddTable("T", {{"a"},
                                                {.strName = "b", .isCompressed = false},
                                                {"c", Memo},
                                                {"d", Long},
                                                {"e", Currency},
                                                {"f", Single},
                                                {"g", Double},
                                                {"h", Date},
                                                {"i", Boolean},
                                                {"j", Numeric, 7},
                                                {"k", Memo},
                                                {.strName = "l", .type = Integer, .isCalculated = true}});
    CRandomCells cells(seed);
    for (int row = 0; row < 300; ++row) {
        const auto whole = static_cast<std::int64_t>(cells.Below(SIZE_MAX));
        table.Add({cells.Text(), cells.Text(), cells.Text(), static_cast<std::int32_t>(whole), whole,
                   static_cast<double>(static_cast<float>(cells.Number())), cells.Number(), cells.Day(),
                   whole % 2 == 0, std::to_string(whole),
                   cells.Below(9) == 0 ? cells.Text() + std::string(5000, 'x') : cells.Text(), whole % 1000});
    }
    return CAccessFile(writer.Finish().Bytes()).Open("T");
}

TEST(PlainTexts, AreThoseOfThePlainWay) {
    const std::size_t least = CountOfValues(100'000);
    CPlainTextCheck sheets, tables;
    unsigned seed = 20261126;
    do {
        for (const unsigned page : pages) {
            const CAnsiPage use(page);
            for (const Platform::SUserLocale& locale : locales) {
                ASSERT_TRUE(Platform::SetUserLocale(locale));
                for (const auto& [open, check] : {std::pair(&RandomSheet, &sheets), std::pair(&RandomTable, &tables)})
                    for (const auto rows = open(++seed); rows->MoveNext();)
                        ASSERT_EQ(check->CheckRow(*rows), "") << "page " << page;
            }
        }
    } while (sheets.GetCellCount() + tables.GetCellCount() < least);
    Platform::SetUserLocale({});
    for (const CPlainTextCheck* const check : {&sheets, &tables}) {
        EXPECT_GT(check->GetPlainCount(), check->GetCellCount() / 3);
        std::printf("%zu of %zu cells needed no conversion\n", check->GetPlainCount(), check->GetCellCount());
    }
}

} // namespace
} // namespace NSTQ::Tests
