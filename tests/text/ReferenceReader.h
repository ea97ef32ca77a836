// A simple reader of delimited text, which has the whole file in memory and processes one byte at a time. The library
// must agree with it on every input: results, fields, counts, raw records, and what HasNextLineData and
// GetReadPosition return after refills of the read buffer.
#pragma once

#include "platform/automation/Bstr.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
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
    bool keepLineEnds = false;
};

/// The result of one read. Before the read `count` is the value of the caller's variable.
struct CRecord {
    bool result = false;
    bool assigned = false; ///< the arrays (and the raw record) were returned
    bool rawFits = true;
    bool hasNext = false;
    bool failedRead = false; ///< the error code is the system's
    int position = 0;
    std::int64_t openQuote = -1;
    std::uint32_t count = 0;
    std::vector<std::string> fields;
    std::string raw;
};

/// How the file's bytes arrive: the most bytes of one read, and which read fails (from 1, the one at opening).
/// Opening reads until it has `first` bytes.
struct CReads {
    std::size_t size = 64000;
    std::size_t failing = 0;
    std::size_t first = 1;
};

class CReferenceReader {
public:
    /// Opens `file`, which must outlive the reader; `start` is 3 when a byte-order mark is skipped.
    CReferenceReader(const CSettings& settings, std::string_view file, CReads reads = {}, std::size_t start = 0)
        : m_settings(settings), m_file(file), m_reads(reads) {
        m_settings.maxLine = std::min<std::uint32_t>(m_settings.maxLine, 65535);
        Available();
        m_pos = start;
    }

    void Read(CRecord& record) {
        m_exhausted = m_failedRead = false;
        m_openQuote = -1;
        const std::size_t start = m_pos;
        record.assigned = record.rawFits = true;
        record.fields.clear();
        record.raw.clear();
        record.result = m_settings.utf8 ? ReadConverted(record) : ReadSplit(record);
        if (!record.assigned) {
            record.fields.clear();
        } else if (m_settings.raw && !m_settings.utf8) {
            record.raw = m_file.substr(start, m_pos - start);
            record.result = record.rawFits = record.raw.size() <= m_settings.maxLine;
        }
        ShowState(record);
    }

    void ReadLine(std::uint32_t line, CRecord& record) {
        m_pos = m_fillStart = m_fillEnd = 0;
        m_exhausted = m_failedRead = record.assigned = record.result = false;
        while (line > 0 && Available()) {
            const int byte = Next();
            ++m_pos;
            line -= IsPre(byte) && TakePost();
        }
        // A line is picked without its raw record, whatever is set.
        const bool raw = std::exchange(m_settings.raw, false);
        if (Available())
            Read(record);
        m_settings.raw = raw;
        ShowState(record);
    }

    bool HasNext() const { return m_fillStart < m_file.size(); }

private:
    static constexpr int tab = 0x09, sub = 0x1A, space = 0x20, quote = 0x22;

    /// A field contains its TABs until its end, so that trimming distinguishes the spaces that they become from other
    /// spaces; the bytes of a line end that is kept are marked.
    static constexpr char16_t kept = 0x100;
    static std::string Finish(const std::u16string& field) {
        std::string text;
        for (const char16_t byte : field.substr(0, field.find_last_not_of(u' ') + 1))
            text += static_cast<char>(byte == tab ? space : byte);
        return text;
    }

    /// Inside quotes, after `byte`: whether it is or begins a line end that is kept.
    template <class TString>
    bool KeepLineEnd(int byte, TString& text, char16_t mark) {
        if (!m_settings.keepLineEnds)
            return false;
        const bool isWhole = IsPre(byte) && TakePost();
        if (!isWhole && byte != '\r' && byte != '\n')
            return false;
        for (const int part : {byte, isWhole ? m_settings.post : 0})
            if (part != 0)
                text += static_cast<typename TString::value_type>(part | mark);
        m_counter += isWhole && m_settings.post != 0;
        return true;
    }

    static std::string ToAnsi(const std::string& text) {
        const int length = static_cast<int>(text.size());
        std::u16string wide(text.size(), u'\0');
        wide.resize(static_cast<std::size_t>(
            Platform::MultiByteToWideChar(Platform::CP_UTF8, 0, text.data(), length, wide.data(), length)));
        return Platform::AnsiFromWide(wide);
    }

    int Next() { return Available() ? static_cast<unsigned char>(m_file[m_pos]) : -1; }
    bool TakePost() { return m_settings.post == 0 || TakeIf(m_settings.post); }
    bool IsPre(int byte) const { return byte >= 0 && byte == static_cast<signed char>(m_settings.pre); }
    bool IsSeparator(int byte) const { return byte == static_cast<unsigned char>(m_settings.separator); }

    void ShowState(CRecord& record) const {
        record.hasNext = HasNext();
        record.position = m_file.empty() ? 0 : static_cast<int>(m_fillStart * 1000 / m_file.size());
        record.failedRead = m_failedRead;
        record.openQuote = m_openQuote;
    }

    bool Available() {
        if (m_pos < m_fillEnd)
            return true;
        if (m_exhausted)
            return false;
        m_fillStart = m_fillEnd;
        if (++m_readCount == m_reads.failing)
            m_failedRead = true;
        else
            m_fillEnd =
                std::min(m_file.size(), m_fillStart + std::max(m_reads.size, m_readCount == 1 ? m_reads.first : 1));
        m_exhausted = m_fillEnd == m_fillStart;
        return !m_exhausted;
    }

    bool TakeIf(char delimiter) {
        const bool matches = Next() >= 0 && Next() == static_cast<signed char>(delimiter);
        m_pos += matches;
        return matches;
    }

    bool ReadSplit(CRecord& record) {
        record.count = 0;
        m_counter = 0;
        m_end = false;
        while (!m_end) {
            std::u16string field;
            if (!Available() || !ReadOneField(field)) {
                m_end = !HasNext();
                return m_end;
            }
            if (m_counter > m_settings.maxLine) {
                record.assigned = false;
                return false;
            }
            if (record.count < m_settings.maxFields)
                record.fields.push_back(Cut(Finish(field)));
            if (!m_end && IsSeparator(Next()))
                ++m_pos;
            ++record.count;
            ++m_counter;
        }
        return true;
    }

    /// False when there is a SUB where the field would begin.
    bool ReadOneField(std::u16string& field) {
        SkipBlanks();
        if (m_end)
            return true;
        if (Next() == sub) {
            ++m_pos;
            Available();
            return false;
        }
        if (Next() != quote || !ReadQuoted(field))
            ReadUnquoted(field);
        return true;
    }

    void SkipBlanks() {
        for (; m_counter < m_settings.maxLine && Available(); ++m_counter) {
            const int byte = Next();
            if (byte > space || IsSeparator(byte) || (!IsPre(byte) && (byte == tab || byte == sub)))
                return;
            ++m_pos;
            m_end = IsPre(byte) && TakePost();
            if (m_end)
                return;
        }
    }

    /// True when a line end has ended the record; otherwise the field goes on.
    bool ReadQuoted(std::u16string& field) {
        m_openQuote = static_cast<std::int64_t>(m_pos++);
        bool isStart = true;
        for (; m_counter < m_settings.maxLine && Available(); ++m_counter) {
            const int byte = Next();
            ++m_pos;
            if (KeepLineEnd(byte, field, kept)) {
                isStart = false;
                continue;
            }
            if (byte == quote) {
                if (Next() != quote) {
                    m_openQuote = -1;
                    return false;
                }
                ++m_pos;
            } else if (byte != tab && byte < space) {
                if (!m_settings.quoteNewLine && IsPre(byte) && TakePost()) {
                    m_openQuote = -1;
                    return m_end = true;
                }
                continue;
            } else if (byte == space && isStart) {
                continue;
            }
            isStart = false;
            field += static_cast<char16_t>(byte);
        }
        return false;
    }

    void ReadUnquoted(std::u16string& field) {
        for (; Available() && !IsSeparator(Next()) && m_counter < m_settings.maxLine; ++m_counter) {
            const int byte = Next();
            ++m_pos;
            if (byte <= space && IsPre(byte)) {
                m_end = TakePost();
            } else if (byte == sub) {
                Available();
                m_end = true;
            } else if (byte >= space || byte == tab) {
                field += static_cast<char16_t>(byte);
            }
            if (m_end)
                return;
        }
    }

    /// codepage_test has the plain form of this.
    std::string Cut(const std::string& field) const {
        return field.substr(0, Platform::KeptTextLength(field.data(), field.size(), m_settings.maxField));
    }

    bool ReadConverted(CRecord& record) {
        std::string text;
        if (!Collect(text)) {
            record.assigned = false;
            return false;
        }
        record.count = 0;
        if (text.empty())
            return true;
        const std::string ansi = ToAnsi(text + '\0');
        if (ansi.size() > m_settings.maxLine)
            return true;
        for (std::size_t start = 0; start < ansi.size() && record.count < m_settings.maxFields; ++record.count) {
            record.fields.push_back(Cut(ansi.c_str() + start));
            start = ansi.find('\0', start) + 1;
        }
        return true;
    }

    /// False when the record has more than maxLine bytes.
    bool Collect(std::string& text) {
        bool quoted = false, done = false, fits = true;
        std::int64_t opening = -1;
        // The next byte is requested even after the record's end.
        while (fits && Available() && !done) {
            const int byte = Next();
            opening = quoted ? opening : static_cast<std::int64_t>(m_pos);
            ++m_pos;
            fits = CollectByte(byte, text, quoted, done) && text.size() <= m_settings.maxLine;
        }
        m_openQuote = quoted && !done ? opening : -1;
        return fits;
    }

    bool CollectByte(int byte, std::string& text, bool& quoted, bool& done) {
        if (quoted && KeepLineEnd(byte, text, 0))
            return true;
        if (IsPre(byte) && TakePost()) {
            done = !(quoted && m_settings.quoteNewLine);
            return true;
        }
        if (IsSeparator(byte) && !quoted) {
            byte = 0;
        } else if (byte < space) {
            done = byte == sub && !text.empty();
            return true;
        } else if (byte == quote) {
            if (!quoted || Next() != quote) {
                quoted = !quoted;
                return true;
            }
            ++m_pos;
        } else if (byte == space && !quoted) {
            return true;
        }
        if (text.size() >= m_settings.maxLine)
            return false;
        text += static_cast<char>(byte);
        return true;
    }

    CSettings m_settings;
    std::string_view m_file;
    CReads m_reads;
    std::size_t m_readCount = 0;
    std::size_t m_pos = 0;
    std::size_t m_fillStart = 0;
    std::size_t m_fillEnd = 0;
    bool m_exhausted = false; ///< a read has failed or returned nothing: this record gets no more bytes
    bool m_failedRead = false;
    std::int64_t m_openQuote = -1;
    std::uint32_t m_counter = 0; ///< bytes and field ends of the record so far
    bool m_end = false;          ///< the record's end has been read
};

} // namespace NSTQ::Tests
