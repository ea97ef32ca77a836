#include "access/AccessHarness.h"

#include "CADOOperater.h"
#include "platform/ComError.h"

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

std::string CAccessFile::Names() {
    std::vector<char*> names;
    const auto result = Prepare();
    if (result != CSourceDataInfo::SDO_DATABASE)
        return "not prepared: " + std::to_string(result);
    m_info.GetSchemaName(names);
    std::string text;
    for (const char* name : names)
        text += (text.empty() ? "" : "|") + std::string(name);
    return text;
}

bool CAccessFile::Select(std::string_view table) {
    std::vector<char*> names;
    m_info.GetSchemaName(names);
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] == table)
            return m_info.SetSelectSchemaIndx(static_cast<DWORD>(i));
    return false;
}

std::string CAccessFile::Read(std::string_view table, bool areNames) {
    const char** fields;
    const WORD* lengths;
    DWORD count;
    std::string text;
    if (Prepare(m_info.GetPassWordString()) != CSourceDataInfo::SDO_DATABASE || !Select(table))
        return "missing";
    CADOOperater reader(300, 65535, 65535);
    if (!reader.FileOpen(&m_info)) {
        char code[20];
        std::snprintf(code, sizeof code, "refused %08X", static_cast<unsigned>(reader.GetErrorRet()));
        return code;
    }
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

std::string CAccessFile::ColumnNames(std::string_view table) {
    return Read(table, true);
}

std::string CAccessFile::Rows(std::string_view table) {
    return Read(table, false);
}

std::string RowsOf(CAccessWriter& writer, std::string_view table) {
    return CAccessFile(writer.Finish().Bytes()).Rows(table);
}

} // namespace NSTQ::Tests
