// make_access_seeds FOLDER: writes the seeds of access_fuzz: small databases of each version, in the form that
// access_fuzz.cpp describes.
#include "support/AccessWriter.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

namespace {

using namespace NSTQ::Tests;
using enum EAccess;

/// Runs of at least this many zeros are left out.
constexpr std::size_t shortestRun = 8;
constexpr std::size_t largestNumber = 0xFFFF;

std::string Pack(std::string_view bytes) {
    std::string packed;
    while (!bytes.empty()) {
        const std::size_t zeros = std::min({bytes.find_first_not_of('\0'), bytes.size(), largestNumber});
        bytes.remove_prefix(zeros);
        const std::size_t length =
            std::min({bytes.find(std::string(shortestRun, '\0')), bytes.size(), largestNumber});
        packed += LittleEndian(zeros, 2) + LittleEndian(length, 2) + std::string(bytes.substr(0, length));
        bytes.remove_prefix(length);
    }
    return packed;
}

void AddTypes(CAccessWriter& writer) {
    CAccessTable& table = writer.AddTable("Types", {{"a", Boolean},
                                                    {"b", Byte},
                                                    {"c", Integer},
                                                    {"d", Long},
                                                    {"e", Currency},
                                                    {"f", Single},
                                                    {"g", Double},
                                                    {"h", Date},
                                                    {"i", Binary},
                                                    {"j", Text},
                                                    {"k", Ole},
                                                    {"l", Guid}});
    table.Add({true, std::int64_t{1}, std::int64_t{2}, std::int64_t{3}, std::int64_t{45000}, 1.5, 2.5, 39448.75,
               "\1\2\3", "text", "object", std::string(16, '\x11')});
    table.Add(AccessRow(12));
}

void AddLayouts(CAccessWriter& writer) {
    CAccessTable& table = writer.AddTable("Layouts", {{"a", Text}, {"b", Memo}, {"c", Long}, {"d", Text}});
    table.Add({"plain", "short", std::int64_t{1}, std::string(200, 'x')});
    table.Add({"gone", "short", std::int64_t{2}, "y"}, {.place = ERowPlace::Deleted});
    table.Add({"moved", std::string(300, 'z'), std::int64_t{3}, "y"}, {.place = ERowPlace::Moved});
    table.Add({"old", "n"}, {.columns = 2});
    table.Options().longValue = SAccessTableOptions::ELongValue::Chain;
    table.Options().chainPiece = 20;
    table.Add({{}, std::string(50, 'c'), std::int64_t{4}, {}});
}

void AddQuery(CAccessWriter& writer) {
    writer.AddQuery("View", {{.attribute = 1, .flag = 1},
                             {.attribute = 5, .strName1 = "Layouts"},
                             {.attribute = 6, .strExpression = "Layouts.a"},
                             {.attribute = 6, .strExpression = "[c]", .strName1 = "Count"},
                             {.attribute = 8, .strExpression = "((Layouts.c)>1) And (a Is Not Null)"}});
}

std::string MakeDatabase(EJet version, bool hasMapPages = false, std::uint32_t key = 0) {
    CAccessWriter writer(version);
    writer.SetKey(key);
    AddTypes(writer);
    AddLayouts(writer);
    AddQuery(writer);
    if (version >= EJet::Ace16)
        writer.AddTable("New", {{"a", Large}, {"b", ExtendedDate}, {"c", Complex}, {"d", Numeric, 4}})
            .Add({std::int64_t{1}, "0000000000000693936:0000000864000000000:7", std::int64_t{1}, "1234567"});
    if (hasMapPages)
        writer.AddTable("Far", {{"a", Text}}, {.hasMapPages = true}).Add({"x"});
    return writer.Finish().Bytes();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_access_seeds FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder);
    const std::pair<const char*, std::string> seeds[] = {
        {"jet3", MakeDatabase(EJet::Jet3)},
        {"jet4", MakeDatabase(EJet::Jet4)},
        {"jet3-map-pages", MakeDatabase(EJet::Jet3, true)},
        {"jet4-map-pages", MakeDatabase(EJet::Jet4, true)},
        {"jet3-encoded", MakeDatabase(EJet::Jet3, false, 0x12345678)},
        {"ace12", MakeDatabase(EJet::Ace12)},
        {"ace17", MakeDatabase(EJet::Ace17)},
    };
    for (const auto& [name, bytes] : seeds)
        std::ofstream(folder / name, std::ios::binary) << Pack(bytes);
    return 0;
}
