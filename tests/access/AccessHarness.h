// Databases of the writer on disk, and what the library makes of them.
#pragma once

#include "CSourceDataInfo.h"
#include "support/AccessWriter.h"
#include "support/TempFolder.h"

namespace NSTQ::Tests {

inline constexpr EJet allVersions[] = {EJet::Jet3,  EJet::Jet4,  EJet::Ace12, EJet::Ace14,
                                       EJet::Ace15, EJet::Ace16, EJet::Ace17};

class CAccessFile {
public:
    explicit CAccessFile(const std::string& bytes, std::string_view name = "data.mdb");

    NSTQCore::CSourceDataInfo::ESourceDataOpen Prepare(const char* passWord = "");
    bool NeedsPassWord() { return m_info.GetIsNeedPassWord(); }
    // These prepare with the password that was given last; there is '|' between names and fields.
    std::string Names();
    std::string ColumnNames(std::string_view table) { return Read(table, true); }
    /// A '\n' behind each row. Where reading fails, "raised" and the description; "refused" when the table does not
    /// open, "missing" when it is not offered.
    std::string Rows(std::string_view table) { return Read(table, false); }

private:
    std::vector<char*> Schemas();
    std::string Read(std::string_view table, bool areNames);

    CTempFolder m_folder;
    std::string m_strPath;
    NSTQCore::CSourceDataInfo m_info;
};

std::string RowsOf(CAccessWriter& writer, std::string_view table = "T");
/// The description of what reading a table past the readers raises: these keep only the code.
std::string CauseOf(CAccessWriter& writer, std::u16string_view table = u"T");

} // namespace NSTQ::Tests
