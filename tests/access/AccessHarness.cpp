#include "access/AccessHarness.h"

#include "CADOOperater.h"
#include "providers/access/Access.h"
#include "support/MemoryAccess.h"
#include "tqcAccess/ComError.h"

#include <algorithm>

namespace NSTQ::Tests {

using namespace NSTQCore;

CAccessFile::CAccessFile(const std::string& bytes, std::string_view name)
    : m_strPath(m_folder.WriteFile(name, bytes)) {
    m_info.SetCommonInfo(m_strPath.c_str(), SCDeclareConstant::SFT_UNKNOWN);
}

CSourceDataInfo::ESourceDataOpen CAccessFile::Prepare(const char* passWord) {
    m_info.SetPassWordString(passWord);
    return m_info.PrepareReadSourceData(false);
}

std::vector<char*> CAccessFile::Schemas() {
    std::vector<char*> names;
    if (Prepare(m_info.GetPassWordString()) == CSourceDataInfo::SDO_DATABASE)
        m_info.GetSchemaName(names);
    return names;
}

std::string CAccessFile::Names() {
    std::string text;
    for (const char* name : Schemas())
        text += (text.empty() ? "" : "|") + std::string(name);
    return text;
}

std::string CAccessFile::Read(std::string_view table, bool areNames) {
    const std::vector<char*> names = Schemas();
    const auto found = std::ranges::find(names, table);
    if (found == names.end())
        return "missing";
    m_info.SetSelectSchemaIndx(static_cast<DWORD>(found - names.begin()));
    CADOOperater reader(300, 65535, 65535);
    if (!reader.FileOpen(&m_info))
        return "refused";
    const char** fields;
    const WORD* lengths;
    DWORD count;
    std::string text;
    const auto append = [&](DWORD countedNul) {
        for (DWORD i = 0; i < count; ++i)
            text.append(i == 0 ? "" : "|").append(fields[i], lengths[i] - countedNul);
    };
    try {
        if (areNames && reader.GetFieldsName(fields, lengths, count))
            append(1);
        for (; !areNames && reader.GetLineData(fields, lengths, count); text += '\n')
            append(0);
    } catch (const Platform::_com_error& error) {
        text += std::string("raised ") + error.Description();
    }
    return text;
}

std::string RowsOf(CAccessWriter& writer, std::string_view table) {
    return CAccessFile(writer.Finish().Bytes()).Rows(table);
}

std::string CauseOf(CAccessWriter& writer, std::u16string_view table) {
    try {
        const auto source = Providers::OpenAccess(
            Providers::CSourceInput(std::make_shared<CMemoryAccess>(writer.Finish().Bytes())), {});
        const auto rows = source->OpenTable(table);
        while (rows->MoveNext())
            for (std::size_t column = 0; column < rows->GetColumnNames().size(); ++column)
                rows->GetValue(column);
    } catch (const Platform::_com_error& error) {
        return (error.Error() == Platform::DB_E_NOTABLE ? "DB_E_NOTABLE" : "") + std::string(error.Description());
    }
    return "nothing";
}

} // namespace NSTQ::Tests
