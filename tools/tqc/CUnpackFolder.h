// The folder of an unpacked package, made known to the handler of signals for as long as the object lives.
#pragma once

#include <string>

namespace NSTQ::Tool {

class CUnpackFolder {
public:
    CUnpackFolder() = default;
    CUnpackFolder(const CUnpackFolder&) = delete;
    CUnpackFolder& operator=(const CUnpackFolder&) = delete;
    ~CUnpackFolder();

    /// `path` is the library's; empty for none.
    void Set(const char* path);

private:
    std::string m_path;
};

} // namespace NSTQ::Tool
