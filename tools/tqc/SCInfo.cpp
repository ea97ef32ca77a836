#include "SCInfo.h"

#include "CFailure.h"
#include "CRowEncoder.h"
#include "CSource.h"
#include "SCErrorText.h"

#include <cerrno>
#include <cstdio>
#include <ctime>

namespace NSTQ::Tool {
namespace {

std::string DescribeTime(const FILETIME& time) {
    constexpr LONGLONG stepsPerSecond = 10'000'000;
    constexpr LONGLONG secondsFrom1601To1970 = 11'644'473'600;
    const auto steps = static_cast<LONGLONG>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
    if (steps == 0)
        return "unknown";
    const auto seconds = static_cast<std::time_t>(steps / stepsPerSecond - secondsFrom1601To1970);
    std::tm local{};
    char text[64] = "unknown";
    if (::localtime_r(&seconds, &local) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &local);
    return text;
}

const char* DescribeLineEnd(const SLineEnd& lineEnd) {
    if (lineEnd.cPost != 0)
        return "CR LF";
    return lineEnd.cPre == SCDataAccessDefine::LF_CODE ? "LF" : "CR";
}

bool IsText(SCDeclareConstant::ESourceFileType type) {
    return type == SCDeclareConstant::SFT_CSV || type == SCDeclareConstant::SFT_TXT ||
           type == SCDeclareConstant::SFT_FIX || type == SCDeclareConstant::SFT_UNKNOWN;
}

void FlushOutput() {
    if (std::fflush(stdout) != 0 && errno != EPIPE)
        throw CFailure(ES_OUTPUT_FAILED, "standard output", SCErrorText::OfSystem(errno));
}

} // namespace

void SCInfo::List(const SOptions& options) {
    CSource source(options);
    const auto tables = source.ListTables();
    CRowEncoder encoder(source.OutputCodePage());
    std::printf("name\trows\tcolumns\n");
    for (const CSource::STable& table : tables) {
        const char* name = table.strName.data();
        const char** names = &name;
        const auto length = static_cast<WORD>(table.strName.size());
        const WORD* lengths = &length;
        if (!encoder.IsIdle())
            encoder.Encode(names, lengths, 1);
        std::printf("%.*s\t%u\t%u\n", static_cast<int>(lengths[0]), names[0], static_cast<unsigned>(table.dwRows),
                    static_cast<unsigned>(table.dwColumns));
    }
    FlushOutput();
}

void SCInfo::Show(const SOptions& options) {
    CSource source(options);
    std::printf("Type:          %s\n", CSource::DescribeType(source.Type()).c_str());
    std::printf("Size:          %lld bytes\n", static_cast<long long>(source.Size()));
    std::printf("Updated:       %s\n", DescribeTime(source.UpdateTime()).c_str());
    const bool isPackage = source.Type() == SCDeclareConstant::SFT_XTQF;
    const bool isOpen = isPackage && source.LookIntoPackage();
    if (isOpen)
        std::printf("Data file:     %lld bytes\n", static_cast<long long>(source.Size()));
    else if (isPackage)
        std::printf("Data file:     needs a password, or the archive is damaged or refused\n");
    if (isOpen || IsText(source.Type())) {
        std::printf("Character set: %s\n", source.DescribeCharacterSet().c_str());
        std::printf("Line end:      %s\n", DescribeLineEnd(source.LineEnd()));
    }
    FlushOutput();
}

} // namespace NSTQ::Tool
