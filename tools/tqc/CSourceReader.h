// The readers of text, with the one thing more that the program needs: where they stand.
#pragma once

#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"

namespace NSTQ::Tool {

class ISourceReader {
public:
    virtual ~ISourceReader() = default;
    virtual NSTQCore::VCTextFileOperater& Rows() = 0;
    /// The file offset of the next byte to be read. It tells a read that found nothing from an empty row.
    virtual LONGLONG GetBytePosition() const = 0;
};

template <class TReader>
class CSourceReader : public ISourceReader, public TReader {
public:
    using TReader::TReader;

    NSTQCore::VCTextFileOperater& Rows() override { return *this; }
    LONGLONG GetBytePosition() const override { return TReader::m_llReadOffset + TReader::GetReadBuffPos(); }
};

} // namespace NSTQ::Tool
