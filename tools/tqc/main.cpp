// tqc: reads a table from a file and writes it as CSV.

#include "CFailure.h"
#include "CInputFile.h"
#include "CReporter.h"
#include "SCCommandLine.h"
#include "SCConvert.h"
#include "SCErrorText.h"
#include "SCInfo.h"
#include "SCPreview.h"
#include "SCSignals.h"
#include "tqcAccess/ComError.h"
#include "tqcAccess/UserLocale.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <new>

namespace NSTQ::Tool {
namespace {

/// A file with the descriptor of a closed standard stream would receive the data for that stream. So closed ones are
/// opened in a way that makes their use fail, so that the problem is noticed.
void FillStandardStreams() {
    constexpr int modes[] = {O_WRONLY, O_RDONLY, O_RDWR};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", modes[stream]);
}

void ShowOne(const SOptions& options, void (*show)(const SOptions&, const CInputFile&)) {
    const CInputFile input(options, options.files[0]);
    try {
        show(options, input);
        if (std::fflush(stdout) != 0 && errno != EPIPE)
            throw CFailure(EExitStatus::OutputFailed, "standard output", SCErrorText::OfSystem(errno));
    } catch (const Platform::_com_error& error) {
        throw input.Explain(error);
    }
}

EExitStatus Run(int argc, const char* const* argv) {
    const auto options = SCCommandLine::Parse(argc, argv);
    if (!options)
        return EExitStatus::Ok;
    if (options->fullNumbers)
        Platform::SetUserLocale({.numberDigits = Platform::ENumberDigits::Full});
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
    FillStandardStreams();
    // A failing write returns an error; the signals would only end the program.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    SCSignals::Handle();
    try {
        return static_cast<int>(Run(argc, argv));
    } catch (const CFailure& failure) {
        CReporter::Print(failure.what());
        return static_cast<int>(failure.Status());
    } catch (const std::bad_alloc&) {
        CReporter::Print("not enough memory; try lower limits");
        return static_cast<int>(EExitStatus::Limit);
    }
}
