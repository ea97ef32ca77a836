#include "CRejectFile.h"

#include "CFailure.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

constexpr std::size_t pieceSize = 65536;

} // namespace

CRejectFile::CRejectFile(const std::string& name, bool isGuarded, bool namesTables)
    : m_target(name), m_isGuarded(isGuarded), m_namesTables(namesTables),
      m_buffer(namesTables ? "row,offset,cause,record,file,table\r\n" : "row,offset,cause,record,file\r\n") {}

void CRejectFile::SetSource(const std::string& file, const std::string& table, const CTextFile* text) {
    m_file = file;
    m_table = table;
    m_source.Reset(Port::noFile);
    if (text == nullptr)
        return;
    m_lineEnd = text->LineEnd().Bytes();
    Port::TFile source = Port::noFile;
    if (const DWORD code = Port::OpenToRead(text->Path(), false, source); code != 0)
        throw CFailure(EExitStatus::NotFound, file, Platform::GetErrorText(code));
    m_source.Reset(source);
}

void CRejectFile::AddText(std::uint64_t row, LONGLONG offset, LONGLONG size, std::string_view cause) {
    m_buffer += std::to_string(row) + ',' + std::to_string(offset) + ',';
    AddQuoted(cause);
    m_buffer += ",\"";
    CopyRecord(offset, size);
    m_buffer += "\",";
    EndRow();
}

void CRejectFile::AddFields(std::uint64_t row, const char* const* fields, const WORD* lengths, DWORD count,
                            std::string_view cause) {
    m_buffer += std::to_string(row) + ",,";
    AddQuoted(cause);
    m_buffer += ',';
    std::string record;
    for (DWORD i = 0; i < count; ++i) {
        record += i == 0 ? "" : ",";
        const std::string_view field(fields[i], lengths[i]);
        const bool isQuoted = field.find_first_of(",\"\r\n") != std::string_view::npos;
        record += isQuoted ? "\"" : "";
        for (const char c : field)
            record.append(c == '"' ? 2 : 1, c);
        record += isQuoted ? "\"" : "";
    }
    AddQuoted(record);
    m_buffer += ',';
    EndRow();
}

/// A record may be longer than the memory: it is copied in pieces.
void CRejectFile::CopyRecord(LONGLONG offset, LONGLONG size) {
    const auto endSize = static_cast<LONGLONG>(m_lineEnd.size());
    if (size >= endSize && ReadAt(offset + size - endSize, endSize) == m_lineEnd)
        size -= endSize;
    bool atStart = true;
    while (size > 0) {
        const std::string_view piece = ReadAt(offset, size);
        AddGuarded(piece, atStart);
        offset += static_cast<LONGLONG>(piece.size());
        size -= static_cast<LONGLONG>(piece.size());
        if (m_buffer.size() >= pieceSize)
            Flush();
    }
}

/// The bytes at that position, at most one piece. Throws CFailure when there are none.
std::string_view CRejectFile::ReadAt(LONGLONG offset, LONGLONG size) {
    m_piece.resize(std::min(pieceSize, static_cast<std::size_t>(size)));
    DWORD got = 0;
    const auto room = static_cast<DWORD>(m_piece.size());
    if (Port::ReadAt(m_source.Get(), offset, m_piece.data(), room, got) != 0 || got == 0)
        throw CFailure(EExitStatus::Unsupported, m_file, "a rejected row cannot be read again; the file has changed");
    return std::string_view(m_piece).substr(0, got);
}

void CRejectFile::AddQuoted(std::string_view text) {
    bool atStart = true;
    m_buffer += '"';
    AddGuarded(text, atStart);
    m_buffer += '"';
}

void CRejectFile::AddGuarded(std::string_view text, bool& isAtStart) {
    m_guarded.clear();
    if (m_isGuarded)
        m_guard.Append(m_guarded, text, isAtStart);
    AddDoubled(m_isGuarded ? m_guarded : text);
}

void CRejectFile::AddDoubled(std::string_view text) {
    for (const char c : text)
        m_buffer.append(c == '"' ? 2 : 1, c);
}

void CRejectFile::EndRow() {
    AddQuoted(m_file);
    if (m_namesTables) {
        m_buffer += ',';
        AddQuoted(m_table);
    }
    m_buffer += "\r\n";
    if (m_buffer.size() >= pieceSize)
        Flush();
}

void CRejectFile::Flush() {
    if (!m_target.Write(m_buffer.data(), m_buffer.size()))
        throw CFailure(EExitStatus::OutputFailed, m_target.Describe(),
                       "the reader of the rejected rows has closed the pipe");
    m_buffer.clear();
}

void CRejectFile::Place() {
    Flush();
    m_target.Replace();
}

} // namespace NSTQ::Tool
