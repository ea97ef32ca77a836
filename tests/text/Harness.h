// Shared by the tests of the text readers: the library's reader and the simple one.
#pragma once

#include "CCsvDataAccess.h"
#include "support/Chosen.h"
#include "text/ReferenceReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tests {

/// The library's reader; it can also be filled without a file, so that tests can read millions of inputs.
class CTestedReader : public NSTQCore::CCsvDataAccess {
public:
    explicit CTestedReader(const CSettings& settings)
        : CCsvDataAccess(settings.maxFields, settings.maxLine, settings.maxField, settings.quoteNewLine),
          m_settings(settings) {
        SetSeparator(settings.separator);
        SetDelimiter(settings.pre, settings.post);
        m_info.SetKeepLineEnds(settings.keepLineEnds);
    }

    /// Describes the file at the first call only, so that later ones make only the reader's own system calls.
    bool Open(const std::string& path) {
        if (path != m_path) {
            m_path = path;
            m_info.SetCommonInfo(path.c_str(), NSTQCore::SCDeclareConstant::SFT_CSV);
            m_info.SetReadCharSet(CharSet());
        }
        return FileOpen(&m_info);
    }

    /// The state after the first fill from a file of these bytes; refills read the open file, which is empty.
    void Load(std::string_view bytes) {
        bytes.copy(reinterpret_cast<char*>(m_pReadBuff.get()), bytes.size());
        m_dwReadSize = static_cast<NSTQ::DWORD>(bytes.size());
        m_dwReadBuffPos = 0;
        m_llReadOffset = 0;
        m_llFileSize = static_cast<NSTQ::LONGLONG>(bytes.size());
        m_eCharSet = CharSet();
    }

    void Read(CRecord& record) {
        Fetch(record, [&](auto& fields, auto& lengths, auto& count, auto& raw, auto& rawSize) {
            return m_settings.raw ? GetLineData(fields, lengths, count, raw, rawSize)
                                  : GetLineData(fields, lengths, count);
        });
    }

    void ReadLine(NSTQ::DWORD line, CRecord& record) {
        Fetch(record, [&](auto& fields, auto& lengths, auto& count, auto&, auto&) {
            return GetSpecificLineData(line, fields, lengths, count);
        });
    }

private:
    NSTQCore::CSourceDataInfo::EReadCharSet CharSet() const {
        return m_settings.utf8 ? NSTQCore::CSourceDataInfo::RCS_UTF8 : NSTQCore::CSourceDataInfo::RCS_ANSI;
    }

    template <class TCall>
    void Fetch(CRecord& record, TCall call) {
        const char** fields = nullptr;
        const NSTQ::WORD* lengths = nullptr;
        const char* raw = nullptr;
        NSTQ::DWORD count = record.count, rawSize = 0;
        record.result = call(fields, lengths, count, raw, rawSize);
        record.count = count;
        record.assigned = fields != nullptr;
        record.fields.resize(record.assigned ? std::min<std::size_t>(count, m_settings.maxFields) : 0);
        for (std::size_t i = 0; i < record.fields.size(); ++i) {
            record.fields[i].assign(fields[i], lengths[i]);
            if (fields[i][lengths[i]] != '\0')
                record.fields[i] += "<no NUL>";
        }
        record.raw.assign(raw == nullptr ? "" : raw, raw == nullptr ? 0 : rawSize);
        // The slack that kernels may read.
        const char* const slack = m_pLineBuff.get() + m_dwMaxLineSize + 1;
        if (std::any_of(slack, slack + Scan::readSlack, [](char byte) { return byte != '\0'; }))
            record.raw += "<written behind the line buffer>";
        record.hasNext = HasNextLineData();
        record.position = GetReadPosition();
        record.failedRead = GetErrorCode() != 0;
        record.openQuote = GetOpenQuotePosition();
    }

    CSettings m_settings;
    std::string m_path;
    NSTQCore::CSourceDataInfo m_info;
};

inline std::string Escape(std::string_view text) {
    return testing::PrintToString(std::string(text.substr(0, 400)));
}

/// TablesTest.cpp explains the notation.
inline std::string Show(const CRecord& record) {
    std::string text = (record.result ? "+" : "-") + std::to_string(record.count) + ':';
    for (std::size_t i = 0; i < record.fields.size(); ++i)
        text += (i == 0 ? "" : "|") + record.fields[i];
    return record.assigned ? text : text + "(none)";
}

inline std::string ShowAll(const CRecord& record) {
    return Escape(Show(record)) + " raw " + Escape(record.raw) + " next " + std::to_string(record.hasNext) +
           " position " + std::to_string(record.position) + " failed read " + std::to_string(record.failedRead) +
           (record.openQuote < 0 ? "" : " open quote " + std::to_string(record.openQuote));
}

inline bool AreEqual(const CRecord& expected, const CRecord& actual) {
    return expected.result == actual.result && expected.assigned == actual.assigned &&
           expected.count == actual.count && expected.hasNext == actual.hasNext &&
           expected.position == actual.position && expected.failedRead == actual.failedRead &&
           expected.openQuote == actual.openQuote && expected.fields == actual.fields &&
           (!expected.rawFits || expected.raw == actual.raw);
}

/// Reads both to the end and once more, at most `maxReads` times. False, with a message, at the first difference.
inline bool Agree(const CSettings& settings, std::string_view bytes, CTestedReader& tested, CReferenceReader& plain,
                  std::size_t maxReads) {
    static CRecord expected, actual;
    bool isLast = false;
    for (std::size_t read = 0; read < maxReads && !isLast; ++read) {
        isLast = !plain.HasNext();
        expected.count = actual.count = 77;
        plain.Read(expected);
        tested.Read(actual);
        if (!AreEqual(expected, actual)) {
            ADD_FAILURE() << settings.title << (settings.utf8 ? " utf8 " : " ansi ") << Scan::GetKernel().name
                          << ", limits " << settings.maxFields << ' ' << settings.maxLine << ' ' << settings.maxField
                          << ", page " << Platform::GetAnsiCodePage() << ", read " << read << " of " << bytes.size()
                          << " bytes " << Escape(bytes) << "\nexpected " << ShowAll(expected) << "\nactual   "
                          << ShowAll(actual);
            return false;
        }
    }
    return true;
}

/// The variations that every input is read with.
inline std::vector<CSettings> Variations(bool utf8) {
    std::vector<CSettings> all(19);
    all[1] = {.title = "raw", .raw = true};
    all[2] = {.title = "quote-newline, raw", .quoteNewLine = true, .raw = true};
    all[3] = {.title = "LF only", .pre = '\n', .post = 0};
    all[4] = {.title = "CR only, quote-newline", .quoteNewLine = true, .pre = '\r', .post = 0};
    all[5] = {.title = "TAB separator", .separator = '\t'};
    all[6] = {.title = "tiny limits", .maxFields = 2, .maxLine = 4, .maxField = 2};
    all[7] = {.title = "tinier limits, raw", .raw = true, .maxFields = 1, .maxLine = 3, .maxField = 1};
    all[8] = {.title = "line end NUL SUB, short lines", .pre = '\0', .post = 0x1A, .maxLine = 2};
    all[9] = {.title = "line end space TAB, nothing stored", .pre = ' ', .post = '\t', .maxFields = 0, .maxField = 0};
    // Limits that are reached in the middle of what a kernel would process.
    all[10] = {.title = "limits of a few blocks", .maxFields = 4, .maxLine = 270, .maxField = 66};
    all[11] = {.title = "high separator", .separator = '\x81'};
    all[12] = {.title = "line ends kept, raw", .raw = true, .keepLineEnds = true};
    all[13] = {.title = "LF only, kept, tiny limits", .pre = '\n', .post = 0, .maxLine = 5, .keepLineEnds = true};
    all[14] = {.title = "line end NUL SUB, kept", .pre = '\0', .post = 0x1A, .keepLineEnds = true};
    all[15] = {.title = "line end space TAB, kept", .pre = ' ', .post = '\t', .maxField = 3, .keepLineEnds = true};
    all[16] = {.title = "line end a CR, kept, short lines", .pre = 'a', .post = '\r', .maxLine = 4};
    all[17] = {.title = "kept, limits of a few blocks", .quoteNewLine = true, .maxLine = 270, .maxField = 66};
    all[18] = {.title = "high separator and line end", .separator = '\x81', .pre = '\n', .post = '\x81'};
    all[16].keepLineEnds = all[17].keepLineEnds = true;
    for (CSettings& settings : all)
        settings.utf8 = utf8;
    return all;
}

} // namespace NSTQ::Tests
