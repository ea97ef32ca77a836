// Makes a kernel of the types for one kind of vector unit.
#pragma once

#include "scan/CColumnReader.h"
#include "scan/CFieldBlocks.h"
#include "scan/CPlainRecords.h"
#include "scan/CRowWriter.h"
#include "scan/CTextCollector.h"
#include "scan/CUtf8Check.h"

namespace NSTQ::Scan {

/// The types are local to the source that is compiled for its processors, and so are their functions.
template <VectorBlock TBlock, FieldChunk TChunk, ColumnPiece TColumnChunk>
class CKernelOf {
public:
    static constexpr SKernel Make(EKernel kernel, const char* name) {
        return {kernel,     name,        ReadFields,  CopyText,    CollectText,
                SplitTexts, ReadColumns, WriteFields, CopyRecords, CountUtf8};
    }

private:
    static void ReadFields(SFields& fields) { CFieldBlocks<TBlock>(fields).Read(fields); }
    static DWORD CopyText(const unsigned char* from, DWORD size, char* to, unsigned char stop) {
        constexpr unsigned char space = 0x20;
        const typename TBlock::Bytes stops = TBlock::Repeat(stop);
        DWORD count = 0;
        for (; size - count >= blockSize; count += blockSize) {
            const TBlock block = TBlock::Load(from + count);
            block.Store(to + count);
            const Mask ends = block.Find(stops) | block.FindControls();
            if (ends != 0)
                return count + TBlock::First(ends);
        }
        for (; count < size && from[count] >= space && from[count] != stop; ++count)
            to[count] = static_cast<char>(from[count]);
        return count;
    }
    static void CollectText(SText& text) { CTextCollector<TBlock>(text).Collect(text); }
    static void SplitTexts(STexts& texts) { Scan::SplitTexts<TBlock>(texts); }
    static void ReadColumns(SColumns& columns) { CColumnReader<TColumnChunk, TBlock>::Read(columns); }
    static void WriteFields(SRow& row) { CRowWriter<TChunk>(row).Write(row); }
    static void CopyRecords(SRecords& records) { CPlainRecords<TBlock>(records).Copy(records); }
    static std::size_t CountUtf8(const unsigned char* text, std::size_t size) {
        return CUtf8Check<TBlock>().Count(text, size);
    }
};

extern const SKernel kernelSse2;
extern const SKernel kernelAvx2;
extern const SKernel kernelAvx512;

} // namespace NSTQ::Scan
