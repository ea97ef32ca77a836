#include "support/Faults.h"

#include "platform/Port.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace {

using namespace NSTQ;
using namespace NSTQ::Platform::Port;
using namespace NSTQ::Tests::Faults;

/// The code that the port gives for an error number of the system.
DWORD CodeOf(int error) {
    constexpr std::pair<int, DWORD> codes[] = {{ENOENT, 2},       {ENOTDIR, 3},        {EACCES, 5},
                                               {EWOULDBLOCK, 32}, {ENAMETOOLONG, 111}, {ENOSPC, 112}};
    const auto* const found = std::ranges::find(codes, error, [](const auto& pair) { return pair.first; });
    return found != std::end(codes) ? found->second : 1117;
}

/// 0 unless the call is to fail.
DWORD FailureOf(Call call) {
    const Scope* const fault = FindStriking(call);
    return fault != nullptr && fault->Limit() == 0 ? CodeOf(fault->Error()) : 0;
}

} // namespace

// The linker leads a call of NAME to `__wrap_NAME` and one of `__real_NAME` to the port; the names are those that the
// compiler makes of the functions.
#if defined(_WIN32)
#define TQC_DWORD "m"
#define TQC_LONG "x"
#else
#define TQC_DWORD "j"
#define TQC_LONG "l"
#endif
#define TQC_TEXT "RKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
#define TQC_PORT(kind, name) asm("__" kind "__ZN4NSTQ8Platform4Port" name)

/// Wraps a function of the port that fails with a code.
#define TQC_WRAP(call, name, mangled, parameters, arguments)                                                         \
    DWORD Real##name parameters TQC_PORT("real", mangled);                                                           \
    DWORD Wrap##name parameters TQC_PORT("wrap", mangled);                                                           \
    DWORD Wrap##name parameters {                                                                                    \
        const DWORD failure = FailureOf(Call::call);                                                                 \
        return failure != 0 ? failure : Real##name arguments;                                                        \
    }

TQC_WRAP(Open, Open, "4OpenE" TQC_TEXT "RKNS1_8SOpeningER" TQC_LONG "Rb",
         (const std::string& path, const SOpening& opening, TFile& file, bool& existed),
         (path, opening, file, existed))
TQC_WRAP(Write, Write, "5WriteE" TQC_LONG "PKv" TQC_DWORD "R" TQC_DWORD,
         (TFile file, const void* buffer, DWORD size, DWORD& written), (file, buffer, size, written = 0))
TQC_WRAP(Seek, Seek, "4SeekE" TQC_LONG TQC_LONG "NS1_7EOriginER" TQC_LONG,
         (TFile file, LONGLONG distance, EOrigin origin, LONGLONG& position), (file, distance, origin, position))
TQC_WRAP(MakeFolder, MakePrivateFolder, "17MakePrivateFolderE" TQC_TEXT, (const std::string& path), (path))

DWORD RealRead(TFile, void*, DWORD, DWORD&) TQC_PORT("real", "4ReadE" TQC_LONG "Pv" TQC_DWORD "R" TQC_DWORD);
DWORD WrapRead(TFile, void*, DWORD, DWORD&) TQC_PORT("wrap", "4ReadE" TQC_LONG "Pv" TQC_DWORD "R" TQC_DWORD);
DWORD WrapRead(TFile file, void* buffer, DWORD size, DWORD& got) {
    const Scope* const fault = FindStriking(Call::Read);
    got = 0;
    if (fault != nullptr && fault->Limit() == 0)
        return CodeOf(fault->Error());
    return RealRead(file, buffer, fault == nullptr ? size : std::min<DWORD>(size, static_cast<DWORD>(fault->Limit())),
                    got);
}
