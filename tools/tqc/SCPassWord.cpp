#include "SCPassWord.h"

#include "CFailure.h"
#include "COpenFile.h"
#include "SCPathText.h"
#include "SCTerminal.h"
#include "tqcAccess/ErrorText.h"

namespace NSTQ::Tool {
namespace {

/// More than the maximum of a password in a description, in any code page.
constexpr std::size_t passwordRoom = 1024;

/// Up to the first line end, which is read too. One byte per call, because the rest may belong to other programs.
DWORD ReadLine(Port::TFile file, std::string& line) {
    line.clear();
    DWORD code = 0;
    DWORD got = 0;
    for (char c = 0; line.size() < passwordRoom; line += c) {
        code = Port::Read(file, &c, 1, got);
        if (code != 0 || got == 0 || c == '\n')
            break;
    }
    if (line.ends_with('\r'))
        line.pop_back();
    return code;
}

/// Reads it from the file that `code` tells to be open.
std::string ReadFrom(DWORD code, Port::TFile file, const std::string& name) {
    std::string line;
    const COpenFile opened(file);
    if (code == 0)
        code = ReadLine(file, line);
    if (code != 0)
        throw CFailure(EExitStatus::NotFound, name, "the password cannot be read: " + Platform::GetErrorText(code));
    return line;
}

std::string ReadFromNumber(int number, const std::string& name) {
    Port::TFile file = Port::noFile;
    const DWORD code = Port::Duplicate(number, Port::EAccess::Read, file);
    return ReadFrom(code, file, name);
}

} // namespace

std::optional<std::string> SCPassWord::FromOptions(const SOptions& options) {
    if (!options.passwordFile.empty()) {
        Port::TFile file = Port::noFile;
        const DWORD code = Port::OpenToRead(options.passwordFile, true, file);
        const std::string line = ReadFrom(code, file, options.passwordFile);
        return SCPathText::ToAnsi(line, options.passwordFile, "the password");
    }
    if (options.passwordDescriptor >= 0) {
        const std::string name = "descriptor " + std::to_string(options.passwordDescriptor);
        // Read once: the line is used for all inputs.
        static const std::string line = ReadFromNumber(options.passwordDescriptor, name);
        return SCPathText::ToAnsi(line, name, "the password");
    }
    return std::nullopt;
}

std::optional<std::string> SCPassWord::Ask(const std::string& file, const std::string& refusal) {
    const std::string prompt = refusal + "Password for " + SCTerminal::OnOneLine(file) + ": ";
    std::string line;
    const auto lock = SCTerminal::Lock();
    if (!Port::AskSecret(prompt, passwordRoom, line) || line.empty())
        return std::nullopt;
    return SCPathText::ToAnsi(line, file, "the password");
}

} // namespace NSTQ::Tool
