// A BIFF workbook. Opening it reads everything before the sheets, except the shared strings.
#pragma once

#include "providers/workbook/IWorkbook.h"
#include "providers/xls/CNameTable.h"

#include <optional>

namespace NSTQ::Providers {

class CXlsBook : public IWorkbook {
public:
    /// `stream` holds the records; `path` names the file in descriptions of errors. Throws CSourceError.
    CXlsBook(std::shared_ptr<IRandomAccess> stream, std::string path, const std::string& passWord);

    const std::string& GetPath() const override { return m_path; }
    const std::vector<std::u16string>& GetSheetNames() const override { return m_sheetNames; }
    const std::vector<SNamedRange>& GetNames() const override { return m_names; }
    bool IsDate1904() const override { return m_isDate1904; }

    std::unique_ptr<ICellSource> OpenCells(std::size_t sheet) override;
    EDateKind GetDateKind(std::uint32_t style, double number) const override {
        return m_formats.GetKind(style, number);
    }
    std::optional<EDateKind> GetCommonDateKind(std::uint32_t style) const override {
        return m_formats.GetCommonKind(style);
    }
    const CTextPool& GetSharedTexts() const override { return m_sharedTexts; }

private:
    /// Data that is needed only while reading.
    struct SGlobals {
        std::vector<std::size_t> tabs; ///< for each tab of the workbook the index of its sheet or noSheet
        CNameTable names;
    };

    void ReadBegin(CRecordReader& records);
    void ReadRecord(CRecordReader& records, SGlobals& globals, const std::string& passWord);
    void ReadCodePage(const CRecordReader& records);
    void ReadSheet(CRecordReader& records, SGlobals& globals);
    void ReadFormat(CRecordReader& records);
    void ReadSharedTexts();
    bool IsBehindEnd(std::uint64_t position) const;

    std::string m_path;
    std::shared_ptr<IRandomAccess> m_stream;
    std::shared_ptr<IRecordCipher> m_cipher; ///< null when nothing is encrypted
    STextForm m_form;
    std::vector<std::u16string> m_sheetNames;
    std::vector<std::uint64_t> m_sheetPositions;
    std::vector<SNamedRange> m_names;
    bool m_isDate1904 = false;
    CNumberFormats m_formats;
    std::optional<std::uint64_t> m_sharedPosition; ///< none after they have been read
    CTextPool m_sharedTexts;
};

} // namespace NSTQ::Providers
