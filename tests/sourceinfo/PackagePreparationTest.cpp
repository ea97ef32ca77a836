// From an xtqf package to its data file, and the removal of the folder with its content.
#include "CSourceDataInfo.h"
#include "support/Bytes.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "support/ZipWriter.h"
#include "tqcAccess/SystemPath.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;
namespace fs = std::filesystem;

class Package : public testing::Test {
protected:
    CTempFolder m_folder;
    std::unique_ptr<CSourceDataInfo> m_info = std::make_unique<CSourceDataInfo>();

    void SetUp() override { ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1); }
    void TearDown() override { ::unsetenv("TMPDIR"); }

    CSourceDataInfo::ESourceDataOpen Prepare(const std::string& archive = DataArchive()) {
        EXPECT_TRUE(
            m_info->SetCommonInfo(m_folder.WriteFile("a.xtqf", archive).c_str(), SCDeclareConstant::SFT_UNKNOWN));
        return m_info->PrepareReadSourceData(false);
    }
    static std::string DataArchive() {
        return MakeZip(
            {{.name = "TqData\\SourceFile.csv", .content = "a,b\r\n"}, {.name = "other/x", .content = ""}});
    }
    std::string Unpacked() const { return m_info->GetUncompressFolderPath(); }
    /// Prepares a package and returns its folder.
    std::string PreparedFolder() {
        EXPECT_EQ(Prepare(), CSourceDataInfo::SDO_PACKAGE);
        return Unpacked();
    }
};

TEST_F(Package, RemovalStaysInsideTheFolder) {
    const std::string unpacked = PreparedFolder();
    EXPECT_EQ(fs::status(unpacked).permissions(), fs::perms::owner_all);
    const char* path = nullptr;
    ASSERT_TRUE(m_info->GetFilePath(path));
    EXPECT_EQ(path, unpacked + "\\TqData\\SourceFile.csv");
    std::string systemPath;
    EXPECT_TRUE(Platform::ConvertToSystemPath(path, systemPath) == 0 && fs::exists(systemPath));

    const std::string victims = m_folder.MakeFolder("tmp/victims");
    m_folder.WriteFile("victim", "kept");
    m_folder.WriteFile("tmp/victims/victim", "kept");
    fs::create_symlink(m_folder.Path("victim"), unpacked + "/link");
    fs::create_directory_symlink(victims, unpacked + "/folder-link");
    // Plain names, although they contain other separators, bytes that are not in the code page, or a best fit.
    for (const char* name : {"..\\..\\victim", "victim\\victim", "caf\xC3\xA9", "\xC2\xA5", "\0015C", "\xFF"})
        std::ofstream(unpacked + '/' + name) << "x";
    fs::create_directories(unpacked + "/\xE8\xA1\xA8/deep/er");
    std::ofstream(unpacked + "/\xE8\xA1\xA8/deep/er/file") << "x";
    m_info.reset();
    EXPECT_FALSE(fs::exists(fs::symlink_status(unpacked)));
    EXPECT_EQ(m_folder.ReadFile("victim") + m_folder.ReadFile("tmp/victims/victim"), "keptkept");
}

TEST_F(Package, NothingRemainsWhateverTheNames) {
    for (const std::string& name : {std::string(100, 'a') + '/' + std::string(100, 'b') + '/' + std::string(50, 'c'),
                                    Repeat("d/", 60) + "x", Repeat("가", 24) + ".csv", Repeat("é", 127)})
        for (const bool isGood : {true, false}) {
            const auto crc = Crc32(isGood ? "1" : "2");
            EXPECT_EQ(
                Prepare(MakeZip({{.name = name, .flags = utf8Flag}, {.name = "x", .content = "1", .crc = crc}})),
                isGood ? CSourceDataInfo::SDO_PACKAGE : CSourceDataInfo::SDO_PASSWORD_ERROR);
            ASSERT_TRUE(fs::exists(Unpacked() + '/' + name)) << name;
            m_info = std::make_unique<CSourceDataInfo>();
            EXPECT_TRUE(fs::is_empty(m_folder.Path("tmp/tqc-" + std::to_string(::geteuid()) + "/Core/tqcAccess")));
        }
}

/// Deeper than the longest path, with few descriptors.
TEST_F(Package, ADeepFolderIsRemoved) {
    const std::string unpacked = PreparedFolder();
    int folder = ::open(unpacked.c_str(), O_DIRECTORY);
    const std::string name(100, 'd');
    for (int level = 0; level < 100; ++level) {
        ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
        const int next = ::openat(folder, name.c_str(), O_DIRECTORY);
        ::close(folder);
        folder = next;
    }
    ::close(folder);
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{static_cast<rlim_t>(folder) + 3, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    m_info.reset();
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(fs::exists(unpacked));
}

TEST_F(Package, WhatCannotBeRemovedRemains) {
    const std::string linked = PreparedFolder();
    fs::rename(linked, linked + "-moved");
    fs::create_directory_symlink(linked + "-moved", linked);
    m_info = std::make_unique<CSourceDataInfo>();
    EXPECT_TRUE(fs::exists(linked + "-moved/TqData/SourceFile.csv")) << "a link is not followed";
    const std::string readOnly = PreparedFolder();
    ::chmod((readOnly + "/TqData/SourceFile.csv").c_str(), 0400);
    m_info.reset();
    EXPECT_TRUE(fs::exists(readOnly + "/TqData/SourceFile.csv") && !fs::exists(readOnly + "/other"));
}

TEST_F(Package, EachPreparationHasItsFolderAndAClonesIsTheSame) {
    const std::string first = PreparedFolder();
    ASSERT_EQ(m_info->PrepareReadSourceData(false), CSourceDataInfo::SDO_PACKAGE);
    const std::string second = Unpacked();
    std::unique_ptr<CSourceDataInfo> clone(m_info->CreateClone());
    EXPECT_TRUE(first != second && clone->GetUncompressFolderPath() == second);
    clone.reset();
    EXPECT_FALSE(fs::exists(second));
    m_info.reset();
    EXPECT_TRUE(fs::exists(first));
}

TEST_F(Package, FailuresHaveTheirResults) {
    EXPECT_EQ(Prepare("no archive"), CSourceDataInfo::SDO_PASSWORD_ERROR);
    const char* path = nullptr;
    EXPECT_FALSE(m_info->GetIsNeedPassWord() || m_info->GetFilePath(path));
    // Neither the folder's path nor that of the data file may have 260 bytes.
    const std::size_t shortest = PreparedFolder().size() + 1;
    const std::string dataFile = "\\TqData\\SourceFile.csv";
    for (const auto& [length, expected] : {std::pair{259 - dataFile.size(), CSourceDataInfo::SDO_PACKAGE},
                                           {260 - dataFile.size(), CSourceDataInfo::SDO_FAILED},
                                           {std::size_t{259}, CSourceDataInfo::SDO_FAILED},
                                           {std::size_t{260}, CSourceDataInfo::SDO_TMPFILE_ERROR}}) {
        ::setenv("TMPDIR", m_folder.MakeFolder("tmp/" + std::string(length - shortest, 'd')).c_str(), 1);
        EXPECT_EQ(Prepare(), expected) << length;
    }

    ::setenv("TMPDIR", m_folder.Path("tmp").c_str(), 1);
    const Faults::Scope full(Faults::Call::MakeFolder, 1, ENOSPC, Faults::Times::Always);
    EXPECT_EQ(Prepare(), CSourceDataInfo::SDO_TMPFILE_ERROR);
}

TEST(PassWord, TooLongOrNoneKeepsTheOldOne) {
    CSourceDataInfo info;
    EXPECT_TRUE(info.SetPassWordString(std::string(259, 'p').c_str()));
    EXPECT_FALSE(info.SetPassWordString(std::string(260, 'q').c_str()) || info.SetPassWordString(nullptr));
    EXPECT_EQ(info.GetPassWordString(), std::string(259, 'p'));
    EXPECT_TRUE(info.SetPassWordString(""));
    EXPECT_EQ(std::string(info.GetPassWordString(), 260), std::string(260, '\0')) << "nothing of the old one is left";
    info.SetPassWordString("x");
    info.SetCommonInfo("/no/a.csv", SCDeclareConstant::SFT_UNKNOWN);
    EXPECT_STREQ(info.GetPassWordString(), "");
}

} // namespace
} // namespace NSTQ::Tests
