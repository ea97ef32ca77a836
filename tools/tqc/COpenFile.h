// An open file that is closed with the object.
#pragma once

#include "platform/Port.h"

namespace NSTQ::Tool {

namespace Port = Platform::Port;

// Codes of the port that the program acts on.
inline constexpr DWORD fileExists = 80;
inline constexpr DWORD brokenPipe = 109;

class COpenFile {
public:
    explicit COpenFile(Port::TFile file = Port::noFile) : m_file(file) {}
    COpenFile(const COpenFile&) = delete;
    COpenFile& operator=(const COpenFile&) = delete;
    ~COpenFile() { Reset(Port::noFile); }

    bool IsOpen() const { return m_file != Port::noFile; }
    Port::TFile Get() const { return m_file; }
    /// Closes the current one and takes another.
    void Reset(Port::TFile file);

private:
    Port::TFile m_file;
};

} // namespace NSTQ::Tool
