// Writes the rows as CSV with CCsvOutPut to a target that is already open.
#pragma once

#include "CCsvOutPut.h"
#include "COutputTarget.h"
#include "IRowOutput.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class COutputFile final : public IRowOutput {
public:
    /// Opens the target `name`; the options determine the form of the rows. Throws CFailure.
    COutputFile(const SOptions& options, const std::string& name);
    /// Removes an incomplete output.
    ~COutputFile() override;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    bool WriteNames(const char* const* names, const WORD* lengths, DWORD count) override {
        return WriteRow(names, lengths, count);
    }
    bool WriteRow(const char* const* fields, const WORD* lengths, DWORD count) override;
    const NSTQCore::CCsvDataAccess::SForm* TextForm() const override { return &m_form; }
    bool WriteText(const char* text, DWORD size) override;
    void Close() override;
    void Replace() override { m_target.Replace(); }
    bool IsStandardOutput() const override { return m_target.IsStandardOutput(); }

private:
    bool CheckWriter();

    COutputTarget m_target;
    const NSTQCore::CCsvDataAccess::SForm m_form;
    NSTQCore::CCsvOutPut m_writer;
};

} // namespace NSTQ::Tool
