// The readers, with the one thing more that the program needs: where they stand.
#pragma once

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"

#include <string>

namespace NSTQ::Tool {

class ISourceReader {
public:
    virtual ~ISourceReader() = default;
    virtual NSTQCore::IDataAccess& Rows() = 0;
    /// The file offset of the next byte to be read, or the number of rows read where there are no bytes. It tells a
    /// read that found nothing from an empty row.
    virtual LONGLONG GetPosition() const = 0;
    /// What the last row lost; empty when nothing.
    virtual std::string TakeNote() { return {}; }
};

template <class TReader>
class CSourceReader : public ISourceReader, public TReader {
public:
    using TReader::TReader;

    NSTQCore::IDataAccess& Rows() override { return *this; }
    LONGLONG GetPosition() const override { return TReader::m_llReadOffset + TReader::GetReadBuffPos(); }
};

class CTableReader : public ISourceReader, public NSTQCore::CADOOperater {
public:
    using CADOOperater::CADOOperater;

    NSTQCore::IDataAccess& Rows() override { return *this; }
    LONGLONG GetPosition() const override { return m_llRows; }
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override {
        const bool read = CADOOperater::GetLineData(ppData, pLen, dwCount);
        m_llRows += read ? 1 : 0;
        return read;
    }

private:
    LONGLONG m_llRows = 0;
};

} // namespace NSTQ::Tool
