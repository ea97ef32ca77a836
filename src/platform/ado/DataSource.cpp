#include "platform/ado/DataSource.h"

#include "platform/codepage/AsciiCase.h"

#include <algorithm>

namespace NSTQ::Platform {

namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

struct SProperties {
    bool isWorkbook = false;
    bool hasHeaderRow = true;
};

SProperties ParseProperties(std::string_view text) {
    constexpr std::string_view workbook = "Excel ";
    SProperties result;
    for (bool first = true; !text.empty(); first = false) {
        const auto end = std::min(text.find(';'), text.size());
        const std::string_view item = Trim(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (first && IsEqualIgnoringCase(item.substr(0, workbook.size()), workbook))
            result.isWorkbook = true;
        else if (first && !item.empty())
            throw _com_error(E_FAIL, "unknown source type \"" + std::string(item) + '"');
        const auto equals = item.find('=');
        if (equals != item.npos && IsEqualIgnoringCase(Trim(item.substr(0, equals)), "HDR"))
            result.hasHeaderRow = !IsEqualIgnoringCase(Trim(item.substr(equals + 1)), "NO");
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

std::unique_ptr<IDataSource> OpenDataSource(const SConnectionString& connection) {
    CheckProvider(connection.provider);
    const SProperties properties = ParseProperties(connection.properties);
    if (connection.dataSource.empty())
        throw _com_error(E_FAIL, "the connection string names no file");
    return OpenSource({connection.dataSource, connection.passWord, properties.hasHeaderRow, properties.isWorkbook,
                       connection.readsAhead});
}

} // namespace NSTQ::Platform
