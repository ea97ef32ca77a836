// The zip directory and the contents of entries: valid forms are read, forged ones refused.
#include "providers/zip/CZipArchive.h"
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace Providers;

constexpr SInflateLimits someLimits = {1U << 26, 1U << 16, 100};

std::string Content(const std::string& zip, std::string_view name, const SInflateLimits& limits = someLimits) {
    std::unique_ptr<IByteStream> stream;
    {
        const CZipArchive reader(std::make_shared<CMemoryAccess>(zip));
        const SZipEntry* entry = reader.Find(name);
        if (entry == nullptr)
            return "no entry";
        stream = reader.Open(*entry, limits);
    }
    std::string content;
    unsigned char buffer[1000];
    while (const std::size_t count = stream->Read(buffer))
        content.append(reinterpret_cast<char*>(buffer), count);
    return content;
}

std::string Noise(std::size_t size) {
    std::string noise(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : noise)
        byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return noise;
}

TEST(ZipReader, ReadsStoredAndDeflatedEntriesInEveryFormOfDirectory) {
    const std::string large = Noise(200000);
    SZipEntryText wide = Deflated({.name = "Dir\\B.xml", .content = large, .size = ~0U, .packedSize = ~0U});
    wide.extra = LittleEndian(1, 2) + LittleEndian(16, 2) + LittleEndian(large.size(), 8) +
                 LittleEndian(wide.packed->size(), 8);
    const std::vector<SZipEntryText> entries = {{.name = "a", .content = "stored"},
                                                wide,
                                                {.name = "/c", .content = large},
                                                {.name = "empty"},
                                                Deflated({.name = "none"})};
    const SZipEndText wideEnd{.count = 0xFFFF, .directorySize = ~0U, .directoryPosition = ~0U, .wide = true};
    for (const std::string& bytes :
         {MakeZip(entries), MakeZip(entries, {.comment = "a comment PK\5\6"}), MakeZip(entries) + "a tail PK\5\6",
          MakeZip(entries) + MakeZip({}).substr(0, 20), MakeZip(entries, {.comment = std::string(65535, 'x')}),
          MakeZip(entries, wideEnd)}) {
        EXPECT_EQ(Content(bytes, "a"), "stored");
        EXPECT_EQ(Content(bytes, "dir/b.XML"), large);
        EXPECT_EQ(Content(bytes, "C"), large);
        EXPECT_EQ(Content(bytes, "empty") + Content(bytes, "none"), "");
        EXPECT_EQ(Content(bytes, "b"), "no entry");
    }
}

/// tests/hostile has the forged directories.
TEST(ZipReader, RefusesForgedEntries) {
    const struct {
        const char* title;
        void (*forge)(SZipEntryText&);
    } cases[] = {
        {"a size too small", [](SZipEntryText& e) { e.size = 4999; }},
        {"a size too large", [](SZipEntryText& e) { e.size = 5001; }},
        {"a size beyond the limits", [](SZipEntryText& e) { e.size = 0xFFFFFFF0; }},
        {"another checksum", [](SZipEntryText& e) { e.crc = 1; }},
        {"fewer packed bytes", [](SZipEntryText& e) { e.packedSize = 100; }},
        {"no packed bytes", [](SZipEntryText& e) { e.packedSize = 0; }},
        {"encryption", [](SZipEntryText& e) { e.flags = 1; }},
        {"an unknown method", [](SZipEntryText& e) { e.method = 12; }},
    };
    const SZipEntryText plain{.name = "a", .content = Noise(5000)};
    for (const auto& known : cases)
        for (SZipEntryText entry : {plain, Deflated(plain)}) {
            known.forge(entry);
            EXPECT_THROW(Content(MakeZip({entry, {.name = "last"}}), "a"), CSourceError) << known.title;
        }
    EXPECT_THROW(Content(MakeZip({{.name = "a/b"}, {.name = "A\\B"}}), "a/b"), CSourceError);
}

TEST(ZipReader, LimitsTheUnpackedSizeAndRatio) {
    const std::string zeros(1U << 20, '\0');
    const std::string zip = MakeZip({Deflated({.name = "a", .content = zeros})});
    EXPECT_EQ(Content(zip, "a", {zeros.size(), zeros.size(), 1}).size(), zeros.size());
    EXPECT_EQ(Content(zip, "a", {zeros.size(), 1000, 2000}).size(), zeros.size());
    EXPECT_THROW(Content(zip, "a", {zeros.size(), 1000, 200}), CSourceError);
    EXPECT_THROW(Content(zip, "a", {zeros.size() - 1, zeros.size(), 2000}), CSourceError);
}

} // namespace
} // namespace NSTQ::Tests
