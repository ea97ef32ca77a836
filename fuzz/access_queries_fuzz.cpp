// Saved queries. The input describes them, and the target writes a database with one table and these queries. After
// the version the input has the rows of the queries: attribute, flag, and three texts, each with a NUL after it.
#include "AccessRun.h"
#include "support/AccessWriter.h"

namespace {

using namespace NSTQ;
using namespace NSTQ::Tests;
using enum EAccess;

constexpr std::size_t maxQueries = 8;
constexpr std::size_t maxRows = 20;
constexpr std::size_t longestName = 60;
constexpr std::size_t longestExpression = 500;
constexpr int tableRows = 3;
/// This attribute ends a query; the flag after it is that of the query.
constexpr std::uint8_t nextQuery = 254;
constexpr std::uint8_t noFlag = 255;

void AddTable(CAccessWriter& writer) {
    writer
        .AddTable("T", {{"Id", Long},
                        {"Name"},
                        {"Price", Currency},
                        {"Day", Date},
                        {"Note", Memo},
                        {"Flag", Boolean},
                        {"Large", Double},
                        {"Digits", Numeric, 2},
                        {"Key", Guid}})
        .Add({std::int64_t{1}, "one", std::int64_t{15000}, 45000.0, "first", true, 1.5, "150", std::string(16, 'g')})
        .Add({std::int64_t{-2},
              "o'ne",
              std::int64_t{-20000},
              39448.75,
              std::string(300, 'x'),
              false,
              -1e300,
              "-1250",
              {}})
        .Add({{}, {}, {}, {}, {}, false, {}, {}, {}});
}

void AddQueries(Fuzz::CFuzzInput& input, CAccessWriter& writer) {
    for (std::size_t query = 0; query < maxQueries && !input.Rest().empty(); ++query) {
        std::vector<SAccessQueryRow> rows;
        std::int64_t flags = 0;
        while (rows.size() < maxRows && !input.Rest().empty()) {
            const std::uint8_t attribute = input.Byte();
            const std::uint8_t flag = input.Byte();
            if (attribute == nextQuery) {
                flags = flag;
                break;
            }
            const std::string_view expression = input.Text(), name1 = input.Text(), name2 = input.Text();
            rows.push_back({attribute, flag == noFlag ? std::optional<std::int64_t>() : flag,
                            std::string(expression.substr(0, longestExpression)),
                            std::string(name1.substr(0, longestName)), std::string(name2.substr(0, longestName))});
        }
        writer.AddQuery("q" + std::to_string(query), rows, flags);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::CFuzzInput input(data, size);
    CAccessWriter writer(input.Pick(std::array{EJet::Jet4, EJet::Jet3, EJet::Ace17}));
    AddTable(writer);
    AddQueries(input, writer);
    bool isRead = false;
    Fuzz::ReadDatabase(writer.Finish().Bytes(), [&](const std::u16string& name, Platform::IRowSource& rows) {
        const int count = Fuzz::ReadTable(rows);
        Fuzz::Require(name.starts_with(u"MSys") || (count == rows.GetRowCount() && count <= tableRows),
                      "a query selects some of the table's rows");
        isRead |= name == u"T" && count == tableRows;
    });
    Fuzz::Require(isRead, "whatever the queries, the table is read");
    return 0;
}
