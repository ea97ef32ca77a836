#include "CJsonWriter.h"

#include "SCPathText.h"
#include "platform/CodePage.h"

#include <cstdio>

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

/// To Unicode and back, which leaves UTF-8 alone.
void CJsonWriter::AppendText(std::string_view text) {
    m_strText += '"';
    for (const char c : SCPathText::Convert(text, CP_UTF8, CP_UTF8)) {
        char escape[8] = {c, 0};
        if (c == '"' || c == '\\')
            std::snprintf(escape, sizeof escape, "\\%c", c);
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(c));
        m_strText.append(escape);
    }
    m_strText += '"';
}

} // namespace NSTQ::Tool
