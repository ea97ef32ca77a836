// Other files, and cut ones: each ends with E_FAIL and a description. tests/hostile has those made to do harm.
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

std::string FailureOf(const std::string& bytes) {
    try {
        const auto source = OpenBytes(bytes);
        RowsText(*source->OpenTable(u"Sheet1$"));
        return "nothing raised";
    } catch (const Platform::_com_error& error) {
        EXPECT_EQ(error.Error(), Platform::E_FAIL);
        return error.Description();
    }
}

TEST(XlsxHostile, OtherFilesAreRefusedWithAReason) {
    const struct {
        std::string bytes;
        const char* word;
    } cases[] = {
        {"", "not a zip package"},
        {"a,b,c\r\n", "not a zip package"},
        {std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(5000, '\0'), "compound file"},
        {CZipBuilder().Finish(), "main document"},
        {CZipBuilder().Add("content.xml", "<office/>").Finish(), "main document"},
    };
    for (const auto& known : cases)
        EXPECT_NE(FailureOf(known.bytes).find(known.word), std::string::npos) << known.word;
    try {
        Providers::OpenXlsx(Platform::SSourceOptions{"/no/such/book.xlsx", "", false});
        ADD_FAILURE();
    } catch (const Platform::_com_error& error) {
        EXPECT_EQ(error.Error(), Platform::E_FAIL);
        EXPECT_STREQ(error.Description(), "/no/such/book.xlsx: the file cannot be opened (error 3)");
    }
}

TEST(XlsxHostile, NoCutOfAFileLeadsAstray) {
    SXlsxParts parts;
    parts.strRows = "<row><c><v>1</v></c></row>";
    const std::string whole = parts.Zip().Finish();
    for (std::size_t size = 0; size < whole.size(); size += 7)
        EXPECT_NE(FailureOf(whole.substr(0, size)), "nothing raised") << size;
}

} // namespace
} // namespace NSTQ::Tests
