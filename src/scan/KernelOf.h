// Makes a kernel of the types for one kind of vector unit.
#pragma once

#include "scan/CColumnReader.h"
#include "scan/CFieldBlocks.h"
#include "scan/CRowWriter.h"
#include "scan/CTextCollector.h"
#include "scan/CUtf8Check.h"
#include "scan/TextRun.h"

namespace NSTQ::Scan {

/// The types are local to the source that is compiled for its processors, and so are their functions.
template <class TBlock, class TChunk, class TColumnChunk>
class CKernelOf {
public:
    static constexpr SKernel Make(EKernel eKernel, const char* pName) {
        return {eKernel, pName, ReadFields, CopyText, CollectText, SplitTexts, ReadColumns, WriteFields, CountUtf8};
    }

private:
    static void ReadFields(SFields& fields) { CFieldBlocks<TBlock>(fields).Read(fields); }
    static DWORD CopyText(const unsigned char* from, DWORD size, char* to, unsigned char stop) {
        return Scan::CopyText<TBlock>(from, size, to, stop);
    }
    static void CollectText(SText& text) { CTextCollector<TBlock>(text).Collect(text); }
    static void SplitTexts(STexts& texts) { Scan::SplitTexts<TBlock>(texts); }
    static void ReadColumns(SColumns& columns) { CColumnReader<TColumnChunk, TBlock>::Read(columns); }
    static void WriteFields(SRow& row) { CRowWriter<TChunk>(row).Write(row); }
    static std::size_t CountUtf8(const unsigned char* text, std::size_t size) {
        return CUtf8Check<TBlock>().Count(text, size);
    }
};

} // namespace NSTQ::Scan
