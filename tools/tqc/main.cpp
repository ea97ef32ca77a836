// tqc: reads a table from a file and writes it as CSV.

#include "CFailure.h"
#include "COutputFile.h"
#include "CReporter.h"
#include "CRowPump.h"
#include "CSource.h"
#include "SCCommandLine.h"
#include "SCInfo.h"
#include "SCPreview.h"
#include "SCSignals.h"
#include "platform/ComError.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <new>
#include <string_view>

namespace NSTQ::Tool {
namespace {

/// A file that took the number of a closed standard stream would receive what is meant for that stream. They are
/// filled with something that refuses what the stream is for, so that its absence is noticed.
void FillStandardStreams() {
    constexpr int modes[] = {O_WRONLY, O_RDONLY, O_RDWR};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", modes[stream]);
}

bool IsProgressWanted(const COutputFile& output) {
    const char* const terminal = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) != 0 && !(output.IsStandardOutput() && ::isatty(STDOUT_FILENO) != 0) &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

EExitStatus Convert(const SOptions& options) {
    CSource source(options);
    const auto reader = source.OpenReader();
    COutputFile output(options);
    if (output.IsStandardOutput() && source.IsFileOf(STDOUT_FILENO))
        throw CFailure(ES_USAGE, options.strFile, "standard output is this very file; use -o");
    CReporter reporter(options.strFile, options.bQuiet, IsProgressWanted(output));
    CRowPump pump(options, *reader, source.OutputCodePage(), output, reporter);
    if (!options.bHeader || pump.WriteNames(source.ColumnNames()))
        pump.Run();
    output.Finish();
    reporter.Finish();
    return reporter.HasLostRows() ? ES_ROWS_LOST : ES_OK;
}

EExitStatus Run(int argc, const char* const* argv) {
    const auto options = SCCommandLine::Parse(argc, argv);
    if (!options)
        return ES_OK;
    switch (options->eCommand) {
    case SOptions::CMD_CONVERT:
        return Convert(*options);
    case SOptions::CMD_PREVIEW:
        SCPreview::Show(*options);
        break;
    case SOptions::CMD_INFO:
        SCInfo::Show(*options);
        break;
    case SOptions::CMD_LIST:
        SCInfo::List(*options);
        break;
    }
    return ES_OK;
}

} // namespace
} // namespace NSTQ::Tool

int main(int argc, char** argv) {
    using namespace NSTQ::Tool;
    FillStandardStreams();
    // Failing writes say what happened; the signals would only end the program.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    SCSignals::Handle();
    try {
        return Run(argc, argv);
    } catch (const CFailure& failure) {
        CReporter::Print(failure.what());
        return failure.Status();
    } catch (const NSTQ::Platform::_com_error& error) {
        CReporter::Print(error.what());
        return error.Error() == NSTQ::Platform::DB_E_DATAOVERFLOW ? ES_LIMIT : ES_UNSUPPORTED;
    } catch (const std::bad_alloc&) {
        CReporter::Print("not enough memory; try smaller limits");
        return ES_LIMIT;
    }
}
