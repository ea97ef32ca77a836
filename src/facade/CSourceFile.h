// A source of the C interface: its type, what its first bytes tell, and its tables.
#pragma once

#include "CSourceDataInfo.h"
#include "SCTextProbe.h"
#include "platform/ado/Provider.h"
#include "tqcAccess.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::NSTQCore {

/// Constructed and used while the page of paths is UTF-8 and that of texts is GetCodePage; constructed with UTF-8 for
/// both.
class CSourceFile {
public:
    /// `ansiCodePage` is that of text that is not UTF-8 and for which the options give no encoding. The texts that
    /// the options point to are used only here. Throws CFault, _com_error or std::bad_alloc.
    CSourceFile(const std::string& path, const tqc_options& options, unsigned ansiCodePage);
    CSourceFile(const CSourceFile&) = delete;
    CSourceFile& operator=(const CSourceFile&) = delete;

    struct STable {
        std::string name;      ///< UTF-8, as people know it
        std::u16string listed; ///< as the provider lists it
    };

    bool IsText() const {
        return m_type != TQC_XLS && m_type != TQC_XLSX && m_type != TQC_MDB && m_type != TQC_ACCDB;
    }
    tqc_type GetType() const { return m_type; }
    const std::string& GetPath() const { return m_path; }
    /// Of the texts that are read.
    unsigned GetCodePage() const { return m_codePage; }
    const std::vector<STable>& GetTables() const { return m_tables; }
    /// Of a workbook or database.
    const std::shared_ptr<Platform::IDataSource>& GetData() const { return m_data; }

    bool HasHeader() const { return m_hasHeader; }
    bool ReplacesInvalid() const { return m_replacesInvalid; }

    // Of text.
    char GetSeparator() const;
    const SLineEnd& GetLineEnd() const { return m_lineEnd; }
    /// The widths of fixed-length text.
    const std::vector<WORD>& GetWidths() const { return m_widths; }
    /// Whether the text has any line end.
    bool HasLineEnds() const { return m_hasLineEnds; }
    /// Whether it is nothing but a BOM.
    bool IsOnlyBom() const { return m_isOnlyBom; }
    /// What the readers open.
    const CSourceDataInfo& GetInfo() const { return *m_info; }

private:
    static std::string ReadHead(const char* path);
    tqc_type FindType(std::string_view head) const;
    void OpenText(std::string_view head, const tqc_options& options, unsigned ansiCodePage);
    /// Returns the head of the data file.
    std::string Unpack(const char* passWord);
    void OpenTables(const char* passWord, bool readsAhead);
    bool IsWorkbook() const { return m_type == TQC_XLS || m_type == TQC_XLSX; }

    std::string m_path;
    bool m_hasHeader;
    bool m_replacesInvalid;
    char m_separator;
    std::vector<WORD> m_widths;
    tqc_type m_type = TQC_CSV;
    unsigned m_codePage;
    SLineEnd m_lineEnd;
    bool m_hasLineEnds = false;
    bool m_isOnlyBom = false;
    std::vector<STable> m_tables;
    std::shared_ptr<Platform::IDataSource> m_data;
    std::unique_ptr<CSourceDataInfo> m_info;
};

} // namespace NSTQ::NSTQCore
