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
    if (m_depth > 0) {
        m_text += m_isFirst ? "\n" : ",\n";
        m_text.append(static_cast<std::size_t>(m_depth) * 2, ' ');
    }
    m_isFirst = false;
    if (key.empty())
        return;
    AppendText(key);
    m_text += ": ";
}

void CJsonWriter::End(char bracket) {
    --m_depth;
    if (!m_isFirst) {
        m_text += '\n';
        m_text.append(static_cast<std::size_t>(m_depth) * 2, ' ');
    }
    m_text += bracket;
    m_isFirst = false;
}

void CJsonWriter::BeginObject(std::string_view key) {
    Begin(key);
    m_text += '{';
    ++m_depth;
    m_isFirst = true;
}

void CJsonWriter::EndObject() {
    End('}');
}

void CJsonWriter::BeginList(std::string_view key) {
    Begin(key);
    m_text += '[';
    ++m_depth;
    m_isFirst = true;
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
    m_text += std::to_string(value);
}

void CJsonWriter::Add(std::string_view key, bool value) {
    Begin(key);
    m_text += value ? "true" : "false";
}

void CJsonWriter::AddNumber(std::string_view key, std::string_view digits) {
    Begin(key);
    m_text += digits;
}

void CJsonWriter::AddNull(std::string_view key) {
    Begin(key);
    m_text += "null";
}

std::string CJsonWriter::Finish() {
    return m_text + '\n';
}

/// Converts to UTF-16 and back, which does not change valid UTF-8. A terminal may show it.
void CJsonWriter::AppendText(std::string_view text) {
    m_text += '"';
    const std::vector<WCHAR> units = SCPathText::ToWide(text, CP_UTF8);
    const auto isSpecial = [](WCHAR unit) { return unit == '"' || unit == '\\' || SCTerminal::IsDisturbing(unit); };
    for (auto at = units.begin(); at != units.end();) {
        const auto special = std::find_if(at, units.end(), isSpecial);
        m_text += SCPathText::FromWide({at, special}, CP_UTF8);
        at = special;
        if (at == units.end())
            break;
        char escape[8] = "";
        const bool isDisturbing = SCTerminal::IsDisturbing(*at);
        std::snprintf(escape, sizeof escape, isDisturbing ? "\\u%04X" : "\\%c", static_cast<unsigned>(*at));
        m_text += escape;
        ++at;
    }
    m_text += '"';
}

} // namespace NSTQ::Tool
