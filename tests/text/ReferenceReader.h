// A plain reader of delimited text, written for reading rather than for speed: a whole file in memory, one byte at a
// time. The library must agree with it on every input: results, fields, counts, raw records, and what the refills of
// the read buffer make of HasNextLineData and GetReadPosition.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tests {

struct CSettings {
    const char* title = "normal";
    bool quoteNewLine = false;
    bool raw = false;
    char separator = ',';
    char pre = '\r';
    char post = '\n';
    std::uint32_t maxFields = 16;
    std::uint32_t maxLine = 4096;
    std::uint32_t maxField = 255;
    bool utf8 = false;
};

/// What one read gives. Before the read `count` holds what the caller's variable holds.
struct CRecord {
    bool result = false;
    bool assigned = false; ///< the arrays (and the raw record) were handed out
    bool rawFits = true;
    bool hasNext = false;
    bool failedRead = false; ///< the error code is the system's
    int position = 0;
    std::uint32_t count = 0;
    std::vector<std::string> fields;
    std::string raw;
};

/// How the file's bytes arrive: the most bytes of one read, and which read fails (from 1, the one at opening).
/// Opening asks on until it has `first` bytes.
struct CReads {
    std::size_t size = 64000;
    std::size_t failing = 0;
    std::size_t first = 1;
};

class CReferenceReader {
public:
    /// Opens `file`, which must outlive the reader; `start` is 3 when a byte-order mark is skipped.
    CReferenceReader(const CSettings& settings, std::string_view file, CReads reads = {}, std::size_t start = 0);

    void Read(CRecord& record);
    void ReadLine(std::uint32_t line, CRecord& record);
    bool HasNext() const { return m_fillStart < m_file.size(); }
    int Position() const;

private:
    struct CField;

    bool Available();
    int Next() { return Available() ? static_cast<unsigned char>(m_file[m_pos]) : -1; }
    bool TakeIf(char delimiter);
    bool TakePost() { return m_settings.post == 0 || TakeIf(m_settings.post); }
    bool IsPre(int byte) const { return byte >= 0 && byte == static_cast<signed char>(m_settings.pre); }
    bool IsSeparator(int byte) const { return byte == static_cast<unsigned char>(m_settings.separator); }

    bool ReadSplit(CRecord& record);
    bool ReadOneField(std::string& field);
    void SkipBlanks();
    bool ReadQuoted(std::string& field);
    void ReadUnquoted(std::string& field);
    bool ReadConverted(CRecord& record);
    bool Collect(std::string& text);
    bool CollectByte(int byte, std::string& text, bool& quoted, bool& done);
    std::string Cut(std::string field) const;

    CSettings m_settings;
    std::string_view m_file;
    CReads m_reads;
    std::size_t m_readCount = 0;
    std::size_t m_pos = 0;
    std::size_t m_fillStart = 0;
    std::size_t m_fillEnd = 0;
    bool m_exhausted = false; ///< a read has failed or given nothing: this record gets no more bytes
    bool m_failedRead = false;
    std::uint32_t m_counter = 0; ///< bytes and field ends of the record so far
    bool m_end = false;          ///< the record's end has been met
};

} // namespace NSTQ::Tests
