// The folder of an unpacked package, registered with the signal handler during the lifetime of the object.
#pragma once

#include <string>

namespace NSTQ::Tool {

class CUnpackFolder {
public:
    CUnpackFolder() = default;
    CUnpackFolder(const CUnpackFolder&) = delete;
    CUnpackFolder& operator=(const CUnpackFolder&) = delete;
    ~CUnpackFolder();

    /// `path` is a path of the library; empty for none.
    void Set(const char* path);

private:
    void Forget() const;

    std::string m_path;
};

} // namespace NSTQ::Tool
