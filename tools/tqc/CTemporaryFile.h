// A file that replaces another one when it is complete, and is removed otherwise.
//
// Other programs see the old file or the new one. If the file system supports files without a name, nothing remains,
// whatever ends the program; the file gets its name when it is complete. On other file systems it has a hidden name
// in the folder of the target (".TARGET.tqc-" and eight letters), and the signal handler removes it; the same applies
// during the two steps that replace an existing file by one without a name.
#pragma once

#include "COpenFile.h"

#include <string>

namespace NSTQ::Tool {

class CTemporaryFile {
public:
    /// Creates the file, with the owner and permissions of an existing target; `isNamed` makes it have a name in any
    /// case. Throws CFailure.
    explicit CTemporaryFile(const std::string& target, bool isNamed = false);
    ~CTemporaryFile();
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;

    /// The hidden name, if it has one.
    const std::string& Path() const { return m_path; }
    Port::TFile File() const { return m_file.Get(); }

    /// Writes the data to disk and replaces the target. Later writes are then visible immediately, and a second call
    /// only writes them to disk. Throws CFailure; the target is then unchanged.
    void Replace();

private:
    void CreateNamed();
    DWORD TryNames(DWORD (CTemporaryFile::*create)());
    DWORD CreateAtPath();
    DWORD LinkToPath();
    bool PlaceNameless();
    void Forget();
    void Check(DWORD code, const char* hint = "") const;

    std::string m_target;
    std::string m_path; ///< the hidden name; empty if there is none
    COpenFile m_file;
    bool m_isPlaced = false;
    std::uint32_t m_permissions = 0; ///< set when it replaces the target; before only the owner may read it
};

} // namespace NSTQ::Tool
