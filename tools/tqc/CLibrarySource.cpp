#include "CLibrarySource.h"

#include "CFailure.h"
#include "SCPassWord.h"
#include "SCPathText.h"
#include "SCTypeNames.h"
#include "tqcAccess/CodePage.h"

namespace NSTQ::Tool {
namespace {

/// The place for an error of the interface.
class CError {
public:
    CError() = default;
    CError(const CError&) = delete;
    CError& operator=(const CError&) = delete;
    ~CError() { tqc_free_error(m_error); }

    tqc_error** Place() { return &m_error; }

    /// As the failure of the program, about the input as it was given and not as it may have been copied.
    CFailure Explain(const CInputFile& input, const std::string& hint = "") const {
        std::string text = tqc_error_text(m_error);
        if (const std::size_t at = text.find(input.Path()); at != std::string::npos)
            text.replace(at, input.Path().size(), input.Name());
        else
            text.insert(0, input.Name() + ": ");
        return {StatusOf(tqc_error_status(m_error)), text + hint};
    }

private:
    static EExitStatus StatusOf(tqc_status status) {
        switch (status) {
        case TQC_INVALID_ARGUMENT:
            return EExitStatus::Usage;
        case TQC_NOT_FOUND:
            return EExitStatus::NotFound;
        case TQC_PASSWORD:
            return EExitStatus::Password;
        case TQC_LIMIT:
        case TQC_NO_MEMORY:
            return EExitStatus::Limit;
        default:
            return EExitStatus::Unsupported;
        }
    }

    tqc_error* m_error = nullptr;
};

} // namespace

CLibraryRows::CLibraryRows(const CInputFile& input, tqc_rows* rows) : m_input(input), m_rows(rows) {
    for (std::size_t i = 0; i < tqc_column_count(rows); ++i)
        m_columns.push_back({tqc_column_name(rows, i), tqc_column_type(rows, i)});
}

bool CLibraryRows::Next() {
    CError error;
    const tqc_value* values = nullptr;
    std::size_t count = 0;
    const tqc_status status = tqc_next_values(m_rows.get(), &values, &count, error.Place());
    if (status != TQC_OK && status != TQC_END)
        throw error.Explain(m_input);
    m_values = {values, count};
    return status == TQC_OK;
}

CLibrarySource::CLibrarySource(const SOptions& options, const CInputFile& input, bool hasHeader, bool mayAsk)
    : m_input(input) {
    constexpr int attemptsMax = 3;
    const Platform::CThreadCodePage page(Platform::CP_UTF8); // of passwords
    CError error;
    auto password = SCPassWord::FromOptions(options);
    tqc_status status = TryToOpen(password, hasHeader, error.Place());
    for (int attempt = 1; status == TQC_PASSWORD && attempt <= attemptsMax; ++attempt) {
        if (SCPassWord::IsGiven(options) || !mayAsk)
            break;
        password = SCPassWord::Ask(input.Name(), attempt > 1 ? "Wrong password.\n" : "");
        if (!password)
            break;
        status = TryToOpen(password, hasHeader, error.Place());
    }
    if (status != TQC_OK)
        throw error.Explain(input, status == TQC_PASSWORD && !SCPassWord::IsGiven(options)
                                       ? "; give it with --password-file or --password-fd"
                                       : "");
    for (std::size_t i = 0; i < tqc_table_count(m_source.get()); ++i)
        m_names.emplace_back(tqc_table_name(m_source.get(), i));
}

tqc_status CLibrarySource::TryToOpen(const std::optional<std::string>& password, bool hasHeader, tqc_error** error) {
    const std::string path = SCPathText::ToLibrary(m_input.Path());
    tqc_options options{};
    options.size = sizeof options;
    options.password = password ? password->c_str() : nullptr;
    options.no_header = hasHeader ? 0 : 1;
    static_assert(TQC_XLS == int{SCDeclareConstant::SFT_XLS} && TQC_MDB == int{SCDeclareConstant::SFT_MDB} &&
                  TQC_XLSX == int{SCDeclareConstant::SFT_XLSX} && TQC_ACCDB == int{SCDeclareConstant::SFT_ACCDB});
    const auto type = m_input.Type().value_or(SCDeclareConstant::SFT_UNKNOWN);
    if (SCTypeNames::HasTables(type))
        options.type = static_cast<tqc_type>(type);
    tqc_source* source = nullptr;
    const tqc_status status = tqc_open(path.c_str(), &options, &source, error);
    m_source.reset(source);
    return status;
}

bool CLibrarySource::IsWorkbook() const {
    const tqc_type type = tqc_source_type(m_source.get());
    return type == TQC_XLS || type == TQC_XLSX;
}

CLibraryRows CLibrarySource::Open(std::size_t table) const {
    CError error;
    tqc_rows* rows = nullptr;
    if (tqc_open_rows(m_source.get(), table, &rows, error.Place()) != TQC_OK)
        throw error.Explain(m_input, m_names.size() > 1 ? "; see the others with: tqc list " + m_input.Name() : "");
    return {m_input, rows};
}

} // namespace NSTQ::Tool
