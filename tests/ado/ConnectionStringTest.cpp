#include "platform/ado/ConnectionString.h"

#include "SCDataAccessDefine.h"
#include "platform/ado/Statement.h"
#include "support/Values.h"

#include <gtest/gtest.h>

namespace {

using namespace NSTQ::Platform;
using NSTQ::NSTQCore::SCDataAccessDefine;
using NSTQ::Tests::Raised;

TEST(ConnectionString, OrdinaryStringsFollowTheRulesOfOleDb) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"", "", ""},
        {" ; ;;", "", ""},
        {"data SOURCE=a", "a", ""},
        {"Data Source=a;Data Source=b", "b", ""},
        {" Data Source = a b ; Extended Properties = x = y ", "a b", "x = y"},
        {"Data Source=\"a;b\"\"c' \" ;Extended Properties='d\"''e'", "a;b\"c' ", "d\"'e"},
        {"Data Source=a\"b;Extended Properties=\"\"", "a\"b", ""},
        {"Data==Source=no;Data Source=/x/y==z.xlsx", "/x/y==z.xlsx", ""},
        {"Data Source=;Extended Properties=p;Unknown=\"q;\"", "", "p"},
        {"Data Source=\tC:\\dir\\a.xls\r\n", "C:\\dir\\a.xls", ""},
        // Quoted, but otherwise like the strings that the library builds.
        {"Provider=Microsoft.ACE.OLEDB.12.0;Data Source=\"/d/a;b.xlsx\";Extended Properties=\"Excel "
         "12.0;HDR=NO;IMEX=1\";Jet OLEDB:Database Password=;",
         "/d/a;b.xlsx", "Excel 12.0;HDR=NO;IMEX=1"},
    };
    for (const auto& [text, source, properties] : cases) {
        const auto parsed = ParseConnectionString(text);
        EXPECT_EQ(parsed.dataSource, source) << text;
        EXPECT_EQ(parsed.properties, properties) << text;
    }
    const auto all = ParseConnectionString("provider=P;JET OLEDB:database password='x;y'");
    EXPECT_EQ(all.provider, "P");
    EXPECT_EQ(all.passWord, "x;y");
    for (const char* text : {"a", "Data Source=a;b", "=a", "a=\"b", "a='b''", "a=\"b\"c", "a==b", "a;=b"})
        EXPECT_EQ(Raised([&] { ParseConnectionString(text); }), DB_E_BADINITSTRING) << text;
}

struct Kind {
    const char* before;
    const char* after;
    const char* extension;
};

using S = SCDataAccessDefine;
const Kind kinds[] = {{S::OFFICE2003_PRECONNECTSTRING, S::EXCLE2003_POSTCONNECTSTRING, ".xls"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::EXCLE2007_POSTCONNECTSTRING, ".XLS"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::EXCLE2007_POSTCONNECTSTRING, ".xlsx"},
                      {S::OFFICE2003_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, ".mdb"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, ".Mdb"},
                      {S::OFFICE2007_PRECONNECTSTRING, S::ACCESS_POSTCONNECTSTRING, ".accdb"}};
const std::string passWordClause = ";Jet OLEDB:Database Password=";

void ExpectParsed(const Kind& kind, const std::string& path, const std::string& password) {
    const std::string text = kind.before + path + kind.after + passWordClause + password + ';';
    const auto parsed = ParseConnectionString(text);
    ASSERT_EQ(parsed.dataSource, path) << text;
    ASSERT_EQ(parsed.passWord, password) << text;
    ASSERT_EQ(kind.before, "Provider=" + parsed.provider + ";Data Source=");
    ASSERT_EQ(kind.after, ";Extended Properties=\"" + parsed.properties + '"');
}

TEST(ConnectionString, BuiltStringsOpenTheirOwnFileWhateverPathAndPasswordHold) {
    // Every pair of these parts.
    std::vector<std::string> parts = {"",
                                      "a",
                                      " ",
                                      ";",
                                      "=",
                                      "\"",
                                      "'",
                                      "a;b=c",
                                      "\"a\"",
                                      "'b",
                                      ";;",
                                      "Data Source=/etc/passwd;",
                                      "\xFF",
                                      ";Extended Properties=",
                                      ";Extended Properties=\"\"",
                                      ";Data Source=b.xlsx;",
                                      passWordClause};
    for (const Kind& kind : kinds)
        parts.insert(parts.end(), {kind.before, kind.after});
    for (const Kind& kind : kinds) {
        const std::string extension = kind.extension, plain = "/d/a" + extension;
        for (const auto& first : parts)
            for (const auto& second : parts) {
                ExpectParsed(kind, first + second + extension, "");
                ExpectParsed(kind, "/d/" + first + extension + second + extension, first);
                ExpectParsed(kind, plain, first + second);
            }
        // Everything between path and password: allowed in a path, and in a password unless a path stands before it.
        for (const Kind& other : kinds) {
            const std::string seam = other.after + passWordClause;
            ExpectParsed(kind, plain + seam + "b;" + extension, "secret");
            ExpectParsed(kind, "/d/" + seam + seam + extension, ";");
            ExpectParsed(kind, plain, seam + seam);
            ExpectParsed(kind, plain, "b.txt" + seam + "c");
        }
        ExpectParsed(kind, std::string(260 - extension.size(), ';') + extension, std::string(259, '"'));
    }
}

TEST(ConnectionString, AmbiguousStringsTakeTheLongerPath) {
    const Kind& kind = kinds[2];
    const std::string seam = kind.after + passWordClause;
    const auto parsed = ParseConnectionString(kind.before + ("a.xlsx" + seam) + "b.xlsx" + seam + "c;");
    EXPECT_EQ(parsed.dataSource, "a.xlsx" + seam + "b.xlsx");
    EXPECT_EQ(parsed.passWord, "c");
    // A path with an unknown extension, not quoted.
    EXPECT_EQ(ParseConnectionString(kind.before + ("/d/a;b.xlsm" + seam) + ';').dataSource, "/d/a;b.xlsm");
}

TEST(Statement, TakesTheTextBetweenTheOuterBrackets) {
    const std::pair<const char16_t*, const char16_t*> good[] = {
        {u"SELECT * FROM [Sheet1$]", u"Sheet1$"},           {u"select*from[a]", u"a"},
        {u" SELECT \t* \n FROM  [ a ]b[ ] ", u" a ]b[ "},   {u"SELECT * FROM []", u""},
        {u"SELECT * FROM [It''s a.b!c$]", u"It''s a.b!c$"},
    };
    for (const auto& [text, name] : good)
        EXPECT_EQ(ParseStatement(text), name);
    for (const char16_t* text :
         {u"", u"SELECT * FROM [a", u"SELECT * FROM a", u"SELECT * FROM ]a[", u"[a]", u"SELECT a FROM [a]",
          u"SELECT * FROM [a] WHERE 1", u"DELETE * FROM [a]", u"SELECT * FROM x [a]", u"SELECT *"})
        EXPECT_EQ(Raised([&] { ParseStatement(text); }), DB_E_ERRORSINCOMMAND);
}

} // namespace
