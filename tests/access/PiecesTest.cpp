// Parts of the reader by themselves: what databases made for tests do not bring about.
#include "providers/access/SCColumnProperties.h"
#include "providers/access/SCNameOrder.h"
#include "support/AccessValues.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace NSTQ::Providers;

std::span<const unsigned char> BytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST(NameOrder, LeavesCaseOutOfAccount) {
    EXPECT_EQ(SCNameOrder::Compare(u"ORDERS \u00C9\u0394\u0416\u0139\u0178\uFF21",
                                   u"orders \u00E9\u03B4\u0436\u013A\u0178\uFF41"),
              0);
    EXPECT_NE(SCNameOrder::Compare(u"\u00D7", u"\u00F7"), 0);
    EXPECT_LT(SCNameOrder::Compare(u"a", u"B"), 0);
    EXPECT_LT(SCNameOrder::Compare(u"a", u"ab"), 0);
}

std::string Sized(const std::string& bytes, std::size_t width, std::size_t extra = 0) {
    return LittleEndian(bytes.size() + extra, width) + bytes;
}

std::string Chunk(std::size_t kind, const std::string& content) {
    return LittleEndian(content.size() + 6, 4) + LittleEndian(kind, 2) + content;
}

TEST(ColumnProperties, GiveCalculatedColumnsTheirTypes) {
    const auto property = [](std::size_t name, const std::string& value) {
        return Sized(LittleEndian(0, 2) + LittleEndian(name, 2) + Sized(value, 2), 2, 2);
    };
    const auto wide = [](const char* text) { return Sized(Utf16Bytes(text), 2); };
    const std::string block = "MR2" + std::string(1, '\0') + Chunk(0x80, wide("Format") + wide("ResultType")) +
                              Chunk(1, Sized(wide("total"), 4, 4) + property(0, "x") + property(1, "\x07"));
    for (std::size_t length = 0; length <= block.size(); ++length) {
        std::vector<SColumn> columns(2);
        columns[0].strName = u"Total";
        columns[1].strName = u"Total";
        columns[1].isCalculated = true;
        SCColumnProperties::TakeResultTypes(BytesOf(std::string_view(block).substr(0, length)), columns);
        EXPECT_EQ(columns[0].type, EColumnType{});
        EXPECT_EQ(columns[1].type, length == block.size() ? EColumnType::Double : EColumnType{}) << length;
    }
}

} // namespace
} // namespace NSTQ::Tests
