// The reader of delimited text, with the one thing more that the program needs: where it stands.
#pragma once

#include "CCsvDataAccess.h"

namespace NSTQ::Tool {

class CSourceReader : public NSTQCore::CCsvDataAccess {
public:
    using CCsvDataAccess::CCsvDataAccess;

    /// The file offset of the next byte to be read. It tells a read that found nothing from an empty row.
    LONGLONG GetBytePosition() const { return m_llReadOffset + GetReadBuffPos(); }
};

} // namespace NSTQ::Tool
