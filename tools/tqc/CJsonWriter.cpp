#include "CJsonWriter.h"

#include "SCPathText.h"
#include "SCTerminal.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace NSTQ::Tool {

using namespace NSTQ::Platform;

void CJsonWriter::Begin(std::string_view key) {
    if (m_iDepth > 0) {
        m_strText += m_bFirst ? "\n" : ",\n";
        m_strText.append(static_cast<std::size_t>(m_iDepth) * 2, ' ');
    }
    m_bFirst = false;
    if (key.empty())
        return;
    AppendText(key);
    m_strText += ": ";
}

void CJsonWriter::End(char bracket) {
    --m_iDepth;
    if (!m_bFirst) {
        m_strText += '\n';
        m_strText.append(static_cast<std::size_t>(m_iDepth) * 2, ' ');
    }
    m_strText += bracket;
    m_bFirst = false;
}

void CJsonWriter::BeginObject(std::string_view key) {
    Begin(key);
    m_strText += '{';
    ++m_iDepth;
    m_bFirst = true;
}

void CJsonWriter::EndObject() {
    End('}');
}

void CJsonWriter::BeginList(std::string_view key) {
    Begin(key);
    m_strText += '[';
    ++m_iDepth;
    m_bFirst = true;
}

void CJsonWriter::EndList() {
    End(']');
}

void CJsonWriter::Add(std::string_view key, std::string_view value) {
    Begin(key);
    AppendText(value);
}

void CJsonWriter::Add(std::string_view key, std::int64_t value) {
    Begin(key);
    m_strText += std::to_string(value);
}

void CJsonWriter::Add(std::string_view key, bool value) {
    Begin(key);
    m_strText += value ? "true" : "false";
}

void CJsonWriter::AddNull(std::string_view key) {
    Begin(key);
    m_strText += "null";
}

std::string CJsonWriter::Finish() {
    return m_strText + '\n';
}

/// To Unicode and back, which leaves UTF-8 alone. A terminal may show it.
void CJsonWriter::AppendText(std::string_view text) {
    m_strText += '"';
    const std::vector<WCHAR> units = SCPathText::ToWide(text, CP_UTF8);
    const auto isSpecial = [](WCHAR unit) { return unit == '"' || unit == '\\' || SCTerminal::IsDisturbing(unit); };
    for (auto at = units.begin(); at != units.end();) {
        const auto special = std::find_if(at, units.end(), isSpecial);
        m_strText += SCPathText::FromWide({at, special}, CP_UTF8);
        at = special;
        if (at == units.end())
            break;
        char escape[8] = "";
        const bool isDisturbing = SCTerminal::IsDisturbing(*at);
        std::snprintf(escape, sizeof escape, isDisturbing ? "\\u%04X" : "\\%c", static_cast<unsigned>(*at));
        m_strText += escape;
        ++at;
    }
    m_strText += '"';
}

} // namespace NSTQ::Tool
