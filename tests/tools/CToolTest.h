// Runs of the program in a folder of their own, with the expected output.
#pragma once

#include "support/Repeat.h"
#include "support/TempFolder.h"
#include "tools/CProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace NSTQ::Tests {

const std::string BOM = "\xEF\xBB\xBF"; ///< in UTF-8

/// Blanks separate the words of a line; '~' is a blank inside a word, and "" an empty word.
struct SCase {
    std::string line;    ///< the arguments; "<NAME" at the end is standard input
    std::string content; ///< of the first file in the line; empty: it exists already, or must not exist
    std::string output;
    std::string errors = ""; ///< a part of standard error, which is empty if this is
    int status = 0;
    std::string made = ""; ///< new files, each as NAME{CONTENT}, and new empty folders, each as NAME/
};

/// "tmp" in the folder is the temporary folder, in which no file may be left.
class CToolTest : public testing::Test {
protected:
    void SetUp() override { ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1); }
    void TearDown() override {
        ::unsetenv("TMPDIR");
        // The library keeps the folder in which it unpacks.
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path("tmp")))
            EXPECT_TRUE(entry.is_directory() && entry.path().string().find("TQD") == std::string::npos)
                << entry.path();
    }

    static std::vector<std::string> Words(const std::string& line) {
        std::vector<std::string> words;
        std::istringstream stream(line);
        for (std::string word; stream >> word; words.push_back(word == "\"\"" ? "" : word))
            std::replace(word.begin(), word.end(), '~', ' ');
        return words;
    }
    SResult Run(const std::string& line, CProgram::SSetting setting = {}) const {
        auto words = Words(line);
        const std::string input =
            !words.empty() && words.back().starts_with('<') ? m_folder.Path(words.back().substr(1)) : "";
        if (!input.empty())
            words.pop_back();
        setting.folder = m_folder.Path();
        setting.input = ::open(input.empty() ? "/dev/null" : input.c_str(), O_RDONLY | O_CLOEXEC);
        const SResult result = CProgram(words, setting).Finish();
        ::close(setting.input);
        return result;
    }
    /// All files, also hidden ones, and all empty folders, sorted.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path()))
            if (!entry.is_directory() || std::filesystem::is_empty(entry.path()))
                if (const auto name = entry.path().string().substr(m_folder.Path().size() + 1);
                    !name.starts_with("tmp"))
                    names.push_back(name + (entry.is_directory() ? "/" : ""));
        std::sort(names.begin(), names.end());
        return names;
    }
    void Check(std::span<const SCase> cases) const {
        const auto first = Names();
        for (const SCase& entry : cases) {
            SCOPED_TRACE(testing::PrintToString(entry.line + " of " + entry.content.substr(0, 100)));
            if (!entry.content.empty())
                m_folder.WriteFile(FirstFile(entry.line), entry.content);
            const auto before = Names();
            const SResult result = Run(entry.line);
            EXPECT_EQ(result.status, entry.status) << result.errors;
            EXPECT_EQ(result.output, entry.output);
            EXPECT_EQ(result.errors.empty(), entry.errors.empty()) << result.errors;
            EXPECT_THAT(result.errors, testing::HasSubstr(entry.errors));
            EXPECT_TRUE(entry.errors.empty() || result.errors.starts_with("tqc: ")) << result.errors;
            const bool isFailure = entry.status > 1;
            EXPECT_TRUE(!isFailure || std::ranges::count(result.errors, '\n') == 1) << result.errors;
            EXPECT_EQ(RemoveOthers(before), entry.made);
            RemoveOthers(first);
        }
    }

    CTempFolder m_folder;

private:
    static std::string FirstFile(const std::string& line) {
        for (const std::string& word : Words(line))
            if (word.find('.') != std::string::npos)
                return word;
        throw std::runtime_error("no file in: " + line);
    }
    /// Removes what is not among `names` and returns it as in SCase::made.
    std::string RemoveOthers(const std::vector<std::string>& names) const {
        std::string text;
        std::vector<std::string> added;
        std::ranges::set_difference(Names(), names, std::back_inserter(added));
        for (const std::string& name : added)
            text += name.ends_with('/') ? name : name + '{' + m_folder.ReadFile(name) + '}';
        for (const std::string& name : added)
            std::filesystem::remove_all(m_folder.Path(name.substr(0, name.find('/'))));
        return text;
    }
};

} // namespace NSTQ::Tests
