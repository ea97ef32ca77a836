// One source of the command line: what is found out about it, and the reader over it.
#pragma once

#include "CFailure.h"
#include "CSourceReader.h"
#include "CUnpackFolder.h"
#include "SOptions.h"
#include "tqcAccess/ComError.h"

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CSource {
public:
    /// Looks at the file and settles the code page, which it sets. The options must outlive the source. Throws
    /// CFailure when it cannot be opened.
    explicit CSource(const SOptions& options);
    /// Removes what a package was unpacked to.
    ~CSource();
    CSource(const CSource&) = delete;
    CSource& operator=(const CSource&) = delete;

    /// The file with the bytes of text: the unpacked one of a package that has been opened.
    const std::string& DataPath() const { return m_strDataPath; }

    /// Opens the file; a package is unpacked for it, until the source is gone. The source must outlive the reader.
    /// Throws CFailure, also for a source without a reader.
    std::unique_ptr<ISourceReader> OpenReader();

    /// A sheet or table of a workbook or database.
    struct STable {
        std::string strName;
        struct SSize {
            DWORD dwRows;
            DWORD dwColumns;
        };
        Platform::HRESULT error;   ///< why it cannot be opened
        std::string strReason;     ///< the same in the provider's words
        std::optional<SSize> size; ///< none when it cannot be opened
    };
    /// All of them. Throws CFailure.
    std::vector<STable> ListTables();
    /// The failure of a sheet or table that cannot be opened.
    CFailure DescribeUnopened(const STable& table, const std::string& hint) const;
    /// Their names alone; nobody is asked for a password. Throws CFailure.
    std::vector<std::string> ListNames();
    /// Whether the columns have names apart from the rows, as those of databases have.
    bool NamesItsColumns() const;
    /// These names, of the table that OpenReader has opened, when the options ask for them.
    const std::vector<std::string>& ColumnNames() const { return m_vecColumns; }

    /// Unpacks a package, so that what follows tells of the data file in it, unless that needs a password which
    /// nothing gives. Throws CFailure.
    bool LookIntoPackage();

    /// The first bytes of text, without its mark.
    std::string_view Head() const;
    /// Whether fixed-length text is to be shown without knowing its widths.
    bool NeedsRuler() const;

    /// SFT_UNKNOWN when neither the options nor the name nor the first line tell.
    SCDeclareConstant::ESourceFileType Type() const { return m_eType; }
    LONGLONG Size() const { return m_status.st_size; }
    FILETIME UpdateTime() const;
    const SLineEnd& LineEnd() const { return m_lineEnd; }
    bool IsDelimited() const;
    /// A workbook or database.
    bool IsDatabase() const;
    /// A character set: its name ("utf-8"), or none when it is not clear, and whether a mark tells it.
    struct SCharacterSet {
        std::string strName;
        bool bMark;
    };
    SCharacterSet CharacterSet() const;
    /// The same in words.
    std::string DescribeCharacterSet() const;
    /// What text probably is that is taken for UTF-8, is none within its first bytes, and of which the options do not
    /// tell anything; else empty.
    std::string DescribeInvalidText() const;
    static std::string DescribeType(SCDeclareConstant::ESourceFileType type);

    /// Whether the descriptor has the same file open.
    bool IsFileOf(int descriptor) const;

private:
    /// What has been read of it cannot be read again.
    bool IsStream() const { return m_options.iStream >= 0; }
    void ReadHead(const std::string& path);
    void ReadHead(int descriptor);
    void SettleCodePage();
    void FindLineEnd();
    void FindType();
    void DescribeFile();
    void CheckReadable() const;
    CSourceDataInfo::ESourceDataOpen Prepare(bool bMayAsk);
    bool Unpack(bool bMayAsk);
    [[noreturn]] void ExplainPackage() const;
    void PrepareDatabase(bool bMayAsk);
    void CheckDatabase() const;
    const char* TableKind() const;
    [[noreturn]] void ExplainListing() const;
    bool IsLocked() const;
    std::string DescribeRefusal() const;
    std::string DescribeThis() const;
    std::vector<std::string> TableNames() const;
    std::optional<std::size_t> FindTable(const std::vector<std::string>& names) const;
    std::string SelectTable(const std::vector<std::string>& names);
    std::unique_ptr<CTableReader> OpenTable();
    void TakeColumnNames(CTableReader& reader);
    static STable Look(const std::string& table, CTableReader& reader);
    std::unique_ptr<ISourceReader> OpenDelimited();
    std::unique_ptr<ISourceReader> OpenFixedLength();
    void OpenFile(NSTQCore::VCTextFileOperater& reader);

    const SOptions& m_options;
    std::string m_strDataPath;
    struct stat m_status {};
    std::string m_strHead; ///< the file's first bytes, one fill of a reader
    bool m_bHeadIsAll = false;
    SLineEnd m_lineEnd;
    SCDeclareConstant::ESourceFileType m_eType = SCDeclareConstant::SFT_UNKNOWN;
    CUnpackFolder m_folder; ///< before the record, which removes the folder, so that it outlives it
    CSourceDataInfo m_info;
    std::vector<std::string> m_vecColumns;
    unsigned m_uPathPage = 0; ///< the code page of the record's paths
};

} // namespace NSTQ::Tool
