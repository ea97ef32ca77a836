// Databases of the writer on disk, and what the library makes of them.
#pragma once

#include "CSourceDataInfo.h"
#include "support/AccessWriter.h"
#include "support/TempFolder.h"

#include <functional>

namespace NSTQ::Tests {

inline constexpr EJet allVersions[] = {EJet::Jet3,  EJet::Jet4,  EJet::Ace12, EJet::Ace14,
                                       EJet::Ace15, EJet::Ace16, EJet::Ace17};

class CAccessFile {
public:
    explicit CAccessFile(const std::string& bytes, std::string_view name = "data.mdb");

    NSTQCore::CSourceDataInfo::ESourceDataOpen Prepare(const char* passWord = "");
    bool NeedsPassWord() { return m_info.GetIsNeedPassWord(); }
    /// What is offered, with '|' between; prepares.
    std::string Names();
    /// Column names with '|' between; prepares.
    std::string ColumnNames(std::string_view table);
    /// Fields with '|' between and rows with '\n'. Where reading fails, "raised" and the description; "refused" and
    /// the code when the table does not open, "missing" when it is not offered. Prepares.
    std::string Rows(std::string_view table);

private:
    bool Select(std::string_view table);
    std::string Read(std::string_view table, bool areNames);

    CTempFolder m_folder;
    std::string m_strPath;
    NSTQCore::CSourceDataInfo m_info;
};

std::string RowsOf(CAccessWriter& writer, std::string_view table = "T");

} // namespace NSTQ::Tests
