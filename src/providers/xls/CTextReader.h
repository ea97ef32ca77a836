// Reads a record that goes on in the records behind it, and the texts in it.
//
// The bytes go on in a CONTINUE record as if there were no border, but for the characters of a text from Excel 97 on:
// where they go on, a byte tells anew whether they take one byte or two.
#pragma once

#include "providers/xls/CRecordReader.h"

namespace NSTQ::Providers {

/// How a workbook writes its texts.
struct STextForm {
    EBiff version = EBiff::Biff8;
    unsigned codePage = 0; ///< of texts before Excel 97
};

class CTextReader {
public:
    /// Begins in the record that `records` is at, behind its first `skipped` bytes, which must be there.
    CTextReader(CRecordReader& records, STextForm form, std::size_t skipped)
        : m_records(records), m_form(form), m_rest(records.GetBody().subspan(skipped)) {}

    /// The operations below throw CSourceError when more is wanted than there is.
    std::uint8_t TakeByte();
    std::uint16_t TakeU16();
    std::uint32_t TakeU32();
    void Skip(std::uint64_t size);
    /// Puts as many bytes into `target` as it has room for.
    void TakeBytes(std::span<unsigned char> target);

    /// Whether anything is left.
    bool HasMore();
    /// Appends a text of that many characters, the count of which has been read; goes behind its formats and phonetic
    /// signs. Throws CSourceError also for what DecodePageText refuses.
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
