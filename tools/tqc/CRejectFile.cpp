#include "CRejectFile.h"

#include "CFailure.h"
#include "SCErrorText.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace NSTQ::Tool {
namespace {

constexpr std::size_t PIECE_SIZE = 65536;

} // namespace

CRejectFile::CRejectFile(const std::string& name, bool bFormulaGuard)
    : m_target(name), m_bGuarded(bFormulaGuard), m_strBuffer("row,offset,cause,record,file\r\n") {}

void CRejectFile::SetSource(const std::string& file, const CTextFile* text) {
    m_strFile = file;
    m_source.Reset(-1);
    if (text == nullptr)
        return;
    m_strLineEnd = text->LineEnd().Bytes();
    m_source.Reset(::open(text->Path().c_str(), O_RDONLY | O_CLOEXEC));
    if (m_source.Get() < 0)
        throw CFailure(ES_NOT_FOUND, file, SCErrorText::OfSystem(errno));
}

void CRejectFile::AddText(std::uint64_t ullRow, LONGLONG llOffset, LONGLONG llSize, std::string_view cause) {
    m_strBuffer += std::to_string(ullRow) + ',' + std::to_string(llOffset) + ',';
    AddQuoted(cause);
    m_strBuffer += ",\"";
    CopyRecord(llOffset, llSize);
    m_strBuffer += "\",";
    EndRow();
}

void CRejectFile::AddFields(std::uint64_t ullRow, const char* const* ppFields, const WORD* pLengths, DWORD dwCount,
                            std::string_view cause) {
    m_strBuffer += std::to_string(ullRow) + ",,";
    AddQuoted(cause);
    m_strBuffer += ',';
    std::string record;
    for (DWORD i = 0; i < dwCount; ++i) {
        record += i == 0 ? "" : ",";
        const std::string_view field(ppFields[i], pLengths[i]);
        const bool isQuoted = field.find_first_of(",\"\r\n") != std::string_view::npos;
        record += isQuoted ? "\"" : "";
        for (const char c : field)
            record.append(c == '"' ? 2 : 1, c);
        record += isQuoted ? "\"" : "";
    }
    AddQuoted(record);
    m_strBuffer += ',';
    EndRow();
}

/// A record may be longer than any memory: it is copied in pieces.
void CRejectFile::CopyRecord(LONGLONG llOffset, LONGLONG llSize) {
    const auto endSize = static_cast<LONGLONG>(m_strLineEnd.size());
    if (llSize >= endSize && ReadAt(llOffset + llSize - endSize, endSize) == m_strLineEnd)
        llSize -= endSize;
    bool atStart = true;
    while (llSize > 0) {
        const std::string_view piece = ReadAt(llOffset, llSize);
        AddGuarded(piece, atStart);
        llOffset += static_cast<LONGLONG>(piece.size());
        llSize -= static_cast<LONGLONG>(piece.size());
        if (m_strBuffer.size() >= PIECE_SIZE)
            Flush();
    }
}

/// The bytes there, or as many of them as a piece holds. Throws CFailure when there are none.
std::string_view CRejectFile::ReadAt(LONGLONG llOffset, LONGLONG llSize) {
    m_strPiece.resize(std::min(PIECE_SIZE, static_cast<std::size_t>(llSize)));
    const ssize_t got = ::pread(m_source.Get(), m_strPiece.data(), m_strPiece.size(), llOffset);
    if (got <= 0)
        throw CFailure(ES_UNSUPPORTED, m_strFile, "a rejected row cannot be read again; the file has changed");
    return std::string_view(m_strPiece).substr(0, static_cast<std::size_t>(got));
}

void CRejectFile::AddQuoted(std::string_view text) {
    bool atStart = true;
    m_strBuffer += '"';
    AddGuarded(text, atStart);
    m_strBuffer += '"';
}

void CRejectFile::AddGuarded(std::string_view text, bool& bAtStart) {
    m_strGuarded.clear();
    if (m_bGuarded)
        m_guard.Append(m_strGuarded, text, bAtStart);
    AddDoubled(m_bGuarded ? m_strGuarded : text);
}

void CRejectFile::AddDoubled(std::string_view text) {
    for (const char c : text)
        m_strBuffer.append(c == '"' ? 2 : 1, c);
}

void CRejectFile::EndRow() {
    AddQuoted(m_strFile);
    m_strBuffer += "\r\n";
    if (m_strBuffer.size() >= PIECE_SIZE)
        Flush();
}

void CRejectFile::Flush() {
    if (!m_target.Write(m_strBuffer.data(), m_strBuffer.size()))
        throw CFailure(ES_OUTPUT_FAILED, m_target.Describe(), "nobody reads the rejected rows any more");
    m_strBuffer.clear();
}

void CRejectFile::Place() {
    Flush();
    m_target.Replace();
}

} // namespace NSTQ::Tool
