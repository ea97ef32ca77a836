// Connection strings and statements. Any text is parsed or rejected; parsing a string that the library would build
// returns the path and the password that are in it.
#include "SCDataAccessDefine.h"
#include "platform/ado/ConnectionString.h"
#include "platform/ado/Statement.h"

#include <cstdlib>
#include <cstring>

namespace {

using namespace NSTQ::Platform;
using NSTQ::NSTQCore::SCDataAccessDefine;

template <class TParse>
void Try(TParse parse) {
    try {
        parse();
    } catch (const _com_error&) {
        // The text is rejected.
    }
}

void CheckBuilt(std::string_view path, std::string_view password) {
    const std::string seam =
        std::string(SCDataAccessDefine::EXCLE2007_POSTCONNECTSTRING).append(databasePassWordClause);
    if (password.find(seam) != password.npos)
        return;
    const std::string source = std::string(path) + ".xlsx";
    const std::string text =
        SCDataAccessDefine::OFFICE2007_PRECONNECTSTRING + source + seam + std::string(password) + ';';
    const SConnectionString parsed = ParseConnectionString(text);
    // A password that contains the text between path and password of another kind of source may be divided there.
    const bool hasOtherSeam = password.find(databasePassWordClause) != password.npos;
    if (!hasOtherSeam && (parsed.dataSource != source || parsed.passWord != password))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Try([&] { ParseConnectionString(text); });
    const auto split = text.find('\n');
    if (split != text.npos)
        CheckBuilt(text.substr(0, split), text.substr(split + 1));
    std::u16string wide(size / 2, u'\0');
    if (!wide.empty())
        std::memcpy(wide.data(), data, wide.size() * 2);
    Try([&] { ParseStatement(wide); });
    return 0;
}
