// Reads a record with its CONTINUE records, and the texts in it.
//
// A CONTINUE record continues the bytes directly, except within the characters of a text from Excel 97 on: there a
// byte states again whether they have one byte or two.
#pragma once

#include "providers/xls/CRecordReader.h"

namespace NSTQ::Providers {

/// How a workbook stores its texts.
struct STextForm {
    EBiff version = EBiff::Biff8;
    unsigned codePage = 0; ///< of texts before Excel 97
};

class CTextReader {
public:
    /// Begins in the current record of `records`, after its first `skipped` bytes, which must exist.
    CTextReader(CRecordReader& records, STextForm form, std::size_t skipped)
        : m_records(records), m_form(form), m_rest(records.GetBody().subspan(skipped)) {}

    /// The operations below throw CSourceError when more bytes are requested than exist.
    std::uint8_t TakeByte();
    std::uint16_t TakeU16();
    std::uint32_t TakeU32();
    void Skip(std::uint64_t size);
    /// Puts as many bytes into `target` as it has room for.
    void TakeBytes(std::span<unsigned char> target);

    /// Whether any bytes remain.
    bool HasMore();
    /// Appends a text of that many characters, the count of which has been read; skips its formats and phonetic
    /// text. Throws CSourceError also for a text that DecodePageText rejects.
    void ReadText(std::size_t count, std::u16string& text);

private:
    void NextPart();
    void ReadAnsi(std::size_t count, std::u16string& text);
    void ReadUnits(std::size_t count, bool isWide, std::u16string& text);
    void AppendUnits(std::size_t count, bool isWide, std::u16string& text);

    CRecordReader& m_records;
    STextForm m_form;
    std::span<const unsigned char> m_rest;
};

} // namespace NSTQ::Providers
