// make_access_samples FOLDER: writes the databases of examples/data, the same each time.
#include "support/AccessWriter.h"
#include "support/Encryptor.h"

#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

using namespace NSTQ::Tests;
using enum EAccess;

std::string Stock(EJet version, std::uint32_t key = 0) {
    CAccessWriter writer(version);
    writer.SetKey(key);
    writer
        .AddTable("Parts", {{"Id", Long},
                            {"Part"},
                            {"Place"},
                            {"Left", Long},
                            {"Price", Currency},
                            {"Counted", Date},
                            {"Remark", Memo}})
        .Add({std::int64_t{1}, "M4 screw, 20 mm", "A-12", std::int64_t{1500}, std::int64_t{1250}, 45000.0, {}})
        .Add({std::int64_t{2}, "washer", "A-13", std::int64_t{820}, std::int64_t{400}, 45000.375, "order 2 boxes"})
        .Add({std::int64_t{3}, "hinge", "B-02", std::int64_t{36}, std::int64_t{24900}, 45012.5, "left or right"});
    writer.AddTable("Places", {{"Place"}, {"Locked", Boolean}}).Add({"A-12", false}).Add({"B-02", true});
    writer.AddQuery("Running low", {{0},
                                    {1, 1},
                                    {5, {}, "", "Parts"},
                                    {6, 0, "Parts.Part"},
                                    {6, 0, "Parts.Left", "How many"},
                                    {8, {}, "(((Parts.Left)<1000))"},
                                    {255}});
    return writer.Finish().Bytes();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_access_samples FOLDER\n";
        return 2;
    }
    constexpr std::uint32_t key = 0x20240229;
    std::string locked = Stock(EJet::Ace14, key);
    EncryptDatabase(locked, AgileCipher("secret", "SHA512", 256), key);
    const std::pair<const char*, std::string> samples[] = {
        {"stock.mdb", Stock(EJet::Jet3)}, {"stock.accdb", Stock(EJet::Ace14)}, {"stock-locked.accdb", locked}};
    for (const auto& [name, bytes] : samples)
        std::ofstream(std::filesystem::path(argv[1]) / name, std::ios::binary) << bytes;
    return 0;
}
