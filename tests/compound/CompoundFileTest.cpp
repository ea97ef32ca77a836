// Valid compound files in every form; tests/hostile has forged ones.
#include "providers/compound/CCompoundFile.h"
#include "support/CompoundBuilder.h"
#include "support/RowsText.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace Providers;

std::string Read(IRandomAccess& stream, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    stream.ReadAt(offset, {reinterpret_cast<unsigned char*>(bytes.data()), size});
    return bytes;
}

std::string ReadStream(const SCompoundBytes& bytes, std::u16string_view path) {
    CCompoundFile file(std::make_shared<CMemoryAccess>(bytes.bytes));
    const std::shared_ptr<IRandomAccess> stream = file.OpenStream(path);
    EXPECT_EQ(stream, file.OpenStream(path));
    return Read(*stream, 0, static_cast<std::size_t>(stream->Size()));
}

TEST(CompoundFile, StreamsOfEverySizeInEveryForm) {
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
                    EXPECT_EQ(ReadStream(file, path), content) << content.size();
                EXPECT_EQ(ReadStream(file, u"\x0006OUTER/inner/dEEP"), streams.back().second);
            }
    // The last sector may be short.
    SCompoundBytes file = CCompoundBuilder().Add(u"a", Noise(5000)).Finish();
    file.bytes.resize(file.TableOffset(12));
    EXPECT_EQ(ReadStream(file, u"a"), Noise(5000));
}

} // namespace
} // namespace NSTQ::Tests
