// One source of the command line: what is found out about it, and the reader over it.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

namespace NSTQ::Tool {

/// The file under a name that makes the library take it for fixed-length text; gone with the object.
class CTextLink {
public:
    explicit CTextLink(const std::string& path);
    CTextLink(const CTextLink&) = delete;
    CTextLink& operator=(const CTextLink&) = delete;
    ~CTextLink();
    const std::string& Path() const { return m_strLink; }

private:
    std::string m_strFolder;
    std::string m_strLink;
};

/// The folder of an unpacked package, made known to the handler of signals for as long as the object lives.
class CUnpackFolder {
public:
    CUnpackFolder() = default;
    CUnpackFolder(const CUnpackFolder&) = delete;
    CUnpackFolder& operator=(const CUnpackFolder&) = delete;
    ~CUnpackFolder();
    void Set(const char* path);

private:
    std::string m_strPath;
};

class CSource {
public:
    /// Looks at the file and settles the code page, which it sets. The options must outlive the source. Throws
    /// CFailure when it cannot be opened.
    explicit CSource(const SOptions& options);
    CSource(const CSource&) = delete;
    CSource& operator=(const CSource&) = delete;

    /// Opens the file; a package is unpacked for it, until the source is gone. The source must outlive the reader.
    /// Throws CFailure, also for a source without a reader.
    std::unique_ptr<ISourceReader> OpenReader();

    /// A sheet or table of a workbook or database.
    struct STable {
        std::string strName;
        DWORD dwRows;
        DWORD dwColumns;
    };
    /// All of them. Throws CFailure.
    std::vector<STable> ListTables();
    /// The names of the columns of the sheet or table that OpenReader has opened; empty for other sources.
    const std::vector<std::string>& ColumnNames() const { return m_vecColumns; }

    /// The preview of fixed-length text. Throws CFailure.
    std::string ReadPreview();

    /// The encoding in which the rows are to be written.
    unsigned OutputCodePage() const;

    /// SFT_UNKNOWN when neither the options nor the name nor the first line tell.
    SCDeclareConstant::ESourceFileType Type() const { return m_eType; }
    LONGLONG Size() const { return m_status.st_size; }
    FILETIME UpdateTime() const;
    const SLineEnd& LineEnd() const { return m_lineEnd; }
    bool IsDelimited() const;
    /// A workbook or database.
    bool IsDatabase() const;
    /// The settled character set and how sure it is, in words.
    std::string DescribeCharacterSet() const;
    static std::string DescribeType(SCDeclareConstant::ESourceFileType type);

    /// Whether the descriptor has the same file open.
    bool IsFileOf(int descriptor) const;

private:
    void ReadHead(const std::string& path);
    void SettleCodePage();
    void FindLineEnd();
    void FindType();
    void CheckReadable() const;
    CSourceDataInfo::ESourceDataOpen Prepare();
    void Unpack();
    void PrepareDatabase();
    [[noreturn]] void ExplainListing() const;
    std::vector<std::string> TableNames() const;
    void SelectTable();
    std::unique_ptr<CTableReader> OpenTable();
    void PrepareFixedLength();
    std::unique_ptr<ISourceReader> OpenDelimited();
    std::unique_ptr<ISourceReader> OpenFixedLength();
    void OpenFile(NSTQCore::VCTextFileOperater& reader);

    const SOptions& m_options;
    struct stat m_status {};
    std::string m_strHead; ///< the file's first bytes, one fill of a reader
    SLineEnd m_lineEnd;
    SCDeclareConstant::ESourceFileType m_eType = SCDeclareConstant::SFT_UNKNOWN;
    CUnpackFolder m_folder; ///< before the record, which removes the folder, so that it outlives it
    CSourceDataInfo m_info;
    std::vector<std::string> m_vecColumns;
    std::unique_ptr<CTextLink> m_pLink;
};

} // namespace NSTQ::Tool
