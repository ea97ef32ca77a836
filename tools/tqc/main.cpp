// tqc: reads a table from a file and writes it as CSV.

#include "CFailure.h"
#include "CInputFile.h"
#include "CReporter.h"
#include "SCCommandLine.h"
#include "SCConvert.h"
#include "SCFormOptions.h"
#include "SCInfo.h"
#include "SCPreview.h"
#include "SCSignals.h"
#include "platform/Port.h"
#include "tqcAccess/ComError.h"
#include "tqcAccess/ErrorText.h"

#include <cerrno>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

namespace NSTQ::Tool {
namespace {

void ShowOne(const SOptions& options, void (*show)(const SOptions&, const CInputFile&)) {
    const CInputFile input(options, options.files[0]);
    try {
        show(options, input);
        const DWORD code = std::fflush(stdout) == 0 ? 0 : Platform::Port::CodeOfErrno(errno);
        if (code != 0 && code != brokenPipe)
            throw CFailure(EExitStatus::OutputFailed, "standard output", Platform::GetErrorText(code));
    } catch (const Platform::_com_error& error) {
        throw input.Explain(error);
    }
}

EExitStatus Run(const std::vector<std::string>& arguments) {
    std::vector<const char*> texts;
    texts.reserve(arguments.size());
    for (const std::string& argument : arguments)
        texts.push_back(argument.c_str());
    const auto options = SCCommandLine::Parse(static_cast<int>(texts.size()), texts.data());
    if (!options)
        return EExitStatus::Ok;
    SCFormOptions::Apply(*options);
    switch (options->command) {
    case SOptions::ECommand::Convert:
        return SCConvert::Run(*options);
    case SOptions::ECommand::Preview:
        ShowOne(*options, SCPreview::Show);
        break;
    case SOptions::ECommand::Info:
        ShowOne(*options, SCInfo::Show);
        break;
    case SOptions::ECommand::List:
        ShowOne(*options, SCInfo::List);
        break;
    }
    return EExitStatus::Ok;
}

} // namespace
} // namespace NSTQ::Tool

int main(int argc, char** argv) {
    using namespace NSTQ::Tool;
    NSTQ::Platform::Port::PrepareProgram();
    SCSignals::Handle();
    try {
        return static_cast<int>(Run(NSTQ::Platform::Port::GetArguments(argc, argv)));
    } catch (const CFailure& failure) {
        CReporter::Print(failure.what());
        return static_cast<int>(failure.Status());
    } catch (const std::bad_alloc&) {
        CReporter::Print("not enough memory; try lower limits");
        return static_cast<int>(EExitStatus::Limit);
    }
}
