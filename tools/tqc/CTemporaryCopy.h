// A copy of an input in the temporary folder that only this user may read, and that is removed at the end, also after
// a signal.
#pragma once

#include "COpenFile.h"
#include "ITextDecoder.h"

#include <string>
#include <string_view>

namespace NSTQ::Tool {

class CTemporaryCopy {
public:
    /// `name` is that of the input in messages.
    explicit CTemporaryCopy(std::string name) : m_name(std::move(name)) {}
    ~CTemporaryCopy();
    CTemporaryCopy(const CTemporaryCopy&) = delete;
    CTemporaryCopy& operator=(const CTemporaryCopy&) = delete;

    // One of these is called, once. Each throws CFailure.

    /// An empty file. If the file system supports files without a name, nothing remains, whatever ends the program.
    void CreateNameless();
    void CreateNamed(const std::string& extension);
    /// Another name for the file `original`, with this extension.
    void LinkTo(const std::string& original, const std::string& extension);

    const std::string& Path() const { return m_path; }
    /// Of an empty file that was created.
    Port::TFile File() const { return m_file.Get(); }

    /// Writes `head` and what follows in the source to the file, as it is or, with a decoder, in UTF-8; then goes
    /// back to the beginning. Throws CFailure.
    void Fill(std::string_view head, Port::TFile source, ITextDecoder* decoder);

private:
    void Write(std::string_view bytes);
    [[noreturn]] void FailToStore(DWORD code, const std::string& hint) const;
    void RemoveLater();

    std::string m_name;
    std::string m_path;
    COpenFile m_file;
    bool m_isToRemove = false;
};

} // namespace NSTQ::Tool
