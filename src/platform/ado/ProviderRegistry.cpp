// The one file that knows the providers.
#include "platform/ado/ProviderRegistry.h"

#include "platform/ado/TextCase.h"
#if defined(TQC_WITH_ACCESS)
#include "providers/access/Access.h"
#endif
#if defined(TQC_WITH_XLS)
#include "providers/xls/Xls.h"
#endif
#if defined(TQC_WITH_XLSX)
#include "providers/xlsx/Xlsx.h"
#endif

#include <algorithm>
#include <array>
#include <utility>

namespace NSTQ::Platform {

namespace {

/// In the order of ESourceFormat; null where this build has none.
constinit std::array<FOpenSource, sourceFormatCount> providers = {
#if defined(TQC_WITH_XLSX)
    &Providers::OpenXlsx,
#else
    nullptr,
#endif
#if defined(TQC_WITH_XLS)
    &Providers::OpenXls,
#else
    nullptr,
#endif
#if defined(TQC_WITH_ACCESS)
    &Providers::OpenAccess,
#else
    nullptr,
#endif
};

std::string_view Trim(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

struct SProperties {
    bool bWorkbook = false;
    bool bHeaderRow = true;
};

SProperties ParseProperties(std::string_view text) {
    constexpr std::string_view workbook = "Excel ";
    SProperties result;
    for (bool first = true; !text.empty(); first = false) {
        const auto end = std::min(text.find(';'), text.size());
        const std::string_view item = Trim(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (first && IsEqualIgnoringCase(item.substr(0, workbook.size()), workbook))
            result.bWorkbook = true;
        else if (first && !item.empty())
            throw _com_error(E_FAIL, "no way to read sources of the kind \"" + std::string(item) + '"');
        const auto equals = item.find('=');
        if (equals != item.npos && IsEqualIgnoringCase(Trim(item.substr(0, equals)), "HDR"))
            result.bHeaderRow = !IsEqualIgnoringCase(Trim(item.substr(equals + 1)), "NO");
    }
    return result;
}

void CheckProvider(std::string_view provider) {
    for (const std::string_view known : {"Microsoft.Jet.OLEDB.4.0", "Microsoft.ACE.OLEDB.12.0"}) {
        if (IsEqualIgnoringCase(provider, known))
            return;
    }
    throw _com_error(adErrProviderNotFound, provider.empty()
                                                ? "the connection string names no provider"
                                                : "there is no provider \"" + std::string(provider) + '"');
}

} // namespace

FOpenSource SetProvider(ESourceFormat format, FOpenSource open) {
    return std::exchange(providers[static_cast<std::size_t>(format)], open);
}

std::unique_ptr<IDataSource> OpenDataSource(const SConnectionString& connection) {
    CheckProvider(connection.strProvider);
    const SProperties properties = ParseProperties(connection.strProperties);
    if (connection.strDataSource.empty())
        throw _com_error(E_FAIL, "the connection string names no file");
    const ESourceFormat format = DetectSourceFormat(connection.strDataSource);
    if (properties.bWorkbook == (format == ESourceFormat::Access))
        throw _com_error(E_FAIL,
                         connection.strDataSource + (properties.bWorkbook ? ": not a workbook" : ": not a database"));
    const FOpenSource open = providers[static_cast<std::size_t>(format)];
    if (open == nullptr)
        throw _com_error(adErrProviderNotFound,
                         connection.strDataSource + ": this build reads no " + GetFormatName(format) + " files");
    auto source = open({connection.strDataSource, connection.strPassWord, properties.bHeaderRow});
    if (source == nullptr)
        throw _com_error(E_FAIL, connection.strDataSource + ": cannot be opened");
    return source;
}

} // namespace NSTQ::Platform
