// The zip directory and the entries' contents: right ones in every form, forged ones refused.
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

TEST(ZipReader, GivesStoredAndDeflatedEntriesInEveryFormOfDirectory) {
    const std::string large = Noise(200000);
    SForgery zip64;
    zip64.isZip64 = true;
    CZipBuilder zip;
    zip.Add("a", "stored")
        .Add("Dir\\B.xml", large, true, zip64)
        .Add("/c", large)
        .Add("empty", "")
        .Add("none", "", true);
    for (const std::string& bytes :
         {zip.Finish(), zip.Finish("a comment PK\5\6"), zip.Finish(std::string(65535, 'x')), zip.Finish({}, true)}) {
        EXPECT_EQ(Content(bytes, "a"), "stored");
        EXPECT_EQ(Content(bytes, "dir/b.XML"), large);
        EXPECT_EQ(Content(bytes, "C"), large);
        EXPECT_EQ(Content(bytes, "empty"), "");
        EXPECT_EQ(Content(bytes, "none"), "");
        EXPECT_EQ(Content(bytes, "b"), "no entry");
    }
}

SForgery Forged(void (*forge)(SForgery&)) {
    SForgery forgery;
    forge(forgery);
    return forgery;
}

TEST(ZipReader, RefusesForgedEntries) {
    const std::string content = Noise(5000);
    const struct {
        const char* title;
        SForgery forgery;
    } cases[] = {
        {"a size too small", Forged([](SForgery& f) { f.size = 4999; })},
        {"a size too large", Forged([](SForgery& f) { f.size = 5001; })},
        {"a size beyond the limits", Forged([](SForgery& f) { f.size = 0xFFFFFFF0; })},
        {"another checksum", Forged([](SForgery& f) { f.crc = 1; })},
        {"fewer compressed bytes", Forged([](SForgery& f) { f.compressedSize = 100; })},
        {"no compressed bytes", Forged([](SForgery& f) { f.compressedSize = 0; })},
        {"more compressed bytes than the file", Forged([](SForgery& f) { f.compressedSize = 0xFFFFFFF0; })},
        {"a place behind the file", Forged([](SForgery& f) { f.offset = 0xFFFFFFF0; })},
        {"a place without a header", Forged([](SForgery& f) { f.offset = 1; })},
        {"a place shared with another entry", Forged([](SForgery& f) { f.offset = 0; })},
        {"encryption", Forged([](SForgery& f) { f.flags = 1; })},
        {"an unknown method", Forged([](SForgery& f) { f.method = 12; })},
    };
    for (const auto& known : cases) {
        for (const bool isDeflated : {false, true}) {
            CZipBuilder zip;
            zip.Add("first", "1").Add("a", content, isDeflated, known.forgery).Add("last", Noise(300));
            EXPECT_THROW(Content(zip.Finish(), "a"), CSourceError) << known.title << isDeflated;
        }
    }
    EXPECT_THROW(Content(CZipBuilder().Add("a/b", "1").Add("A\\B", "2").Finish(), "a/b"), CSourceError);
}

TEST(ZipReader, BoundsWhatUnfolds) {
    const std::string zeros(1U << 20, '\0');
    const std::string zip = CZipBuilder().Add("a", zeros, true).Finish();
    EXPECT_EQ(Content(zip, "a", {zeros.size(), zeros.size(), 1}).size(), zeros.size());
    EXPECT_EQ(Content(zip, "a", {zeros.size(), 1000, 2000}).size(), zeros.size());
    EXPECT_THROW(Content(zip, "a", {zeros.size(), 1000, 200}), CSourceError);
    EXPECT_THROW(Content(zip, "a", {zeros.size() - 1, zeros.size(), 2000}), CSourceError);
}

TEST(ZipReader, NoCutOrChangedByteOfADirectoryLeadsAstray) {
    CZipBuilder zip;
    zip.Add("a", Noise(100), true).Add("b", "stored");
    for (const bool isZip64 : {false, true}) {
        const std::string whole = zip.Finish({}, isZip64);
        for (std::size_t size = 0; size < whole.size(); ++size)
            EXPECT_THROW(Content(whole.substr(0, size), "b"), CSourceError) << size;
        for (std::size_t at = 0; at < whole.size(); ++at) {
            for (const char change : {'\x01', '\x80', '\xFF'}) {
                std::string changed = whole;
                changed[at] = static_cast<char>(changed[at] ^ change);
                try {
                    Content(changed, "a");
                    Content(changed, "b");
                } catch (const CSourceError&) {
                }
            }
        }
    }
}

} // namespace
} // namespace NSTQ::Tests
