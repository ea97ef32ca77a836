// Compound files: right ones in every form, forged ones refused in bounded time.
#include "providers/compound/CCompoundFile.h"
#include "support/CompoundBuilder.h"
#include "support/MemoryAccess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace NSTQ::Tests {
namespace {

using namespace Providers;
using testing::HasSubstr;

std::string Read(IRandomAccess& stream, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    stream.ReadAt(offset, {reinterpret_cast<unsigned char*>(bytes.data()), size});
    return bytes;
}

std::string ReadStream(std::string bytes, std::u16string_view path) {
    std::shared_ptr<IRandomAccess> stream;
    try {
        CCompoundFile file(std::make_shared<CMemoryAccess>(std::move(bytes)));
        stream = file.OpenStream(path);
        EXPECT_EQ(stream, file.OpenStream(path));
    } catch (const CSourceError& error) {
        return std::string("error: ") + error.what();
    }
    return Read(*stream, 0, static_cast<std::size_t>(stream->Size()));
}

TEST(CompoundFile, StreamsOfEverySizeComeBackInEveryForm) {
    std::vector<std::pair<std::u16string, std::string>> streams;
    for (const std::size_t size :
         std::initializer_list<std::size_t>{0, 1, 63, 64, 65, 511, 512, 4095, 4096, 4097, 8192, 100'000})
        streams.emplace_back(u"S" + std::u16string(streams.size() + 1, u'x'), Noise(size, 7));
    streams.emplace_back(u"\x0006Outer/Inner/Deep", Noise(700, 3));
    CCompoundBuilder builder;
    for (const auto& [path, content] : streams)
        builder.Add(path, content);
    for (const std::size_t sectorSize : std::initializer_list<std::size_t>{512, 4096})
        for (const bool isScattered : {false, true})
            for (const bool hasLongChains : {false, true}) {
                SCompoundBytes file = builder.Finish({sectorSize, isScattered, hasLongChains});
                if (sectorSize == 512)
                    file.Set(file.entries[u"Sx"] + SCompoundBytes::size + 4, 0xBAADF00D);
                for (const auto& [path, content] : streams)
                    EXPECT_EQ(ReadStream(file.bytes, path), content) << content.size();
                EXPECT_EQ(ReadStream(file.bytes, u"\x0006OUTER/inner/dEEP"), streams.back().second);
            }
}

TEST(CompoundFile, ReadsAnywhereAndAsFewTimesAsPiecesLieApart) {
    class CCounted : public CMemoryAccess {
    public:
        using CMemoryAccess::CMemoryAccess;
        void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override {
            ++count;
            CMemoryAccess::ReadAt(offset, target);
        }
        int count = 0;
    };
    // Above 109 sectors of the allocation table, so that some are listed outside the header.
    const std::string content = Noise(9'000'000);
    for (const bool isScattered : {false, true}) {
        CCompoundBuilder builder;
        const auto file = std::make_shared<CCounted>(builder.Add(u"a", content).Finish({512, isScattered}).bytes);
        const auto stream = CCompoundFile(file).OpenStream(u"A");
        EXPECT_LT(file->count, 400);
        EXPECT_TRUE(Read(*stream, 0, content.size()) == content);
        for (const std::size_t offset : std::initializer_list<std::size_t>{1, 511, 513, 65'535, 8'999'000})
            EXPECT_EQ(Read(*stream, offset, 1000), content.substr(offset, 1000));
        file->count = 0;
        Read(*stream, 1000, 500'000);
        EXPECT_LE(file->count, isScattered ? 1000 : 1);
        EXPECT_THROW(Read(*stream, 8'999'001, 1000), CSourceError);
        EXPECT_EQ(Read(*stream, 9'000'000, 0), "");
    }
}

TEST(CompoundFile, TheLastSectorMayBeShort) {
    CCompoundBuilder builder;
    SCompoundBytes file = builder.Add(u"a", Noise(5000)).Finish();
    file.bytes.resize(file.TableOffset(12));
    EXPECT_EQ(ReadStream(file.bytes, u"a"), Noise(5000));
}

TEST(CompoundFile, RefusesWhatIsDamagedAndSaysWhy) {
    using TFile = SCompoundBytes;
    const auto startOf = [](const TFile& file, const char16_t* path) { return file.GetEntry(path, TFile::start); };
    const struct {
        const char* title;
        std::function<void(TFile&)> forge;
        const char* error;
    } cases[] = {
        {"a text", [](TFile& f) { f.bytes.assign(600, 'x'); }, "not a compound file"},
        {"a header cut off", [](TFile& f) { f.bytes.resize(511); }, "not a compound file"},
        {"nothing but a header", [](TFile& f) { f.bytes.resize(512); }, "larger than the whole file"},
        {"another byte order", [](TFile& f) { f.bytes[28] = 1; }, "header"},
        {"sectors of 2^40 bytes", [](TFile& f) { f.bytes[30] = 40; }, "header"},
        {"small sectors of another size", [](TFile& f) { f.bytes[32] = 7; }, "header"},
        {"billions of table sectors", [](TFile& f) { f.Set(44, 0x7FFFFFFF); }, "larger than the whole file"},
        {"a table that lists itself twice", [](TFile& f) { f.Set(44, 2), f.Set(80, f.Get(76)); }, "used twice"},
        {"a table behind the file", [](TFile& f) { f.Set(76, 0x7FFFFFFF); }, "behind the end"},
        {"no table", [](TFile& f) { f.Set(76, 0xFFFFFFFF); }, "table ends before"},
        {"a directory behind the file", [](TFile& f) { f.Set(48, 1000); }, "the directory: sector 1000 lies behind"},
        {"a cyclic directory", [](TFile& f) { f.Set(f.TableOffset(f.Get(48)), f.Get(48)); }, "directory: sector"},
        {"no root", [](TFile& f) { f.bytes[f.entries[u""] + TFile::type] = 1; }, "no root"},
        {"a name that is not there", [](TFile& f) { f.bytes[f.entries[u"large"]] = 'x'; }, "\"large\" is missing"},
        {"a storage of that name", [](TFile& f) { f.bytes[f.entries[u"large"] + TFile::type] = 1; }, "is missing"},
        {"a child beyond the directory", [](TFile& f) { f.SetEntry(u"", TFile::child, 99); }, "directory is damaged"},
        {"entries in a ring", [](TFile& f) { f.SetEntry(u"small", TFile::right, 1); }, "directory is damaged"},
        {"a size beyond the file", [](TFile& f) { f.SetEntry(u"large", TFile::size, 0xFFFFFFF0); }, "larger than"},
        {"a size beyond the chain", [](TFile& f) { f.SetEntry(u"large", TFile::size, 10'241); }, "ends too early"},
        {"a start behind the file", [](TFile& f) { f.SetEntry(u"large", TFile::start, 5000); }, "behind the end"},
        {"a chain into nothing", [&](TFile& f) { f.Set(f.TableOffset(startOf(f, u"large")), 0xFFFFFFFF); },
         "to none"},
        {"a cyclic chain", [&](TFile& f) { f.Set(f.TableOffset(startOf(f, u"large") + 1), startOf(f, u"large")); },
         "used twice"},
        {"a chain into the directory", [&](TFile& f) { f.Set(f.TableOffset(startOf(f, u"large")), f.Get(48)); },
         "used twice"},
        {"a stream of small sectors that is cyclic",
         [&](TFile& f) { f.Set(f.TableOffset(startOf(f, u"")), startOf(f, u"")); }, "\"large\" is missing"},
    };
    CCompoundBuilder builder;
    builder.Add(u"small", Noise(300)).Add(u"large", Noise(10'000));
    for (const auto& c : cases) {
        TFile file = builder.Finish();
        c.forge(file);
        const bool isSmall = std::string_view(c.title).find("small sectors that") != std::string_view::npos;
        const std::string result = ReadStream(file.bytes, isSmall ? u"small" : u"large");
        EXPECT_THAT(result, HasSubstr(isSmall ? "the stream of small sectors: sector" : c.error)) << c.title;
    }
}

TEST(CompoundFile, EveryBeginningOfAFileIsReadOrRefused) {
    CCompoundBuilder builder;
    const std::string whole = builder.Add(u"small", Noise(300)).Add(u"large", Noise(5'000)).Finish().bytes;
    std::size_t refused = 0;
    for (std::size_t size = 0; size < whole.size(); size += 37) {
        const std::string result = ReadStream(whole.substr(0, size), u"large");
        EXPECT_TRUE(result == Noise(5'000) || result.starts_with("error: ")) << size;
        refused += result.starts_with("error: ") ? 1 : 0;
    }
    // The allocation table, which is last, may lack what it says of sectors that nobody has.
    EXPECT_GT(refused, whole.size() / 37 - 20);
}

} // namespace
} // namespace NSTQ::Tests
