#include "CSqliteOutput.h"

#include "AsciiCase.h"
#include "CBinaryText.h"
#include "CFailure.h"
#include "CInputFile.h"
#include "SCValueText.h"
#include "platform/Port.h"
#include "tqcAccess/DataType.h"
#include "tqcAccess/ErrorText.h"
#include "tqcAccess/UserLocale.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <utility>

namespace NSTQ::Tool {
namespace {

/// SQLite's REAL gives the digits of a decimal number back up to this many.
constexpr std::size_t digitsMax = 15;

std::string Quote(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

std::size_t CountDigits(std::string_view decimal) {
    const std::size_t first = decimal.find_first_not_of("-0.");
    return first == std::string_view::npos
               ? 0
               : decimal.size() - first - (decimal.find('.', first) != std::string_view::npos ? 1 : 0);
}

} // namespace

void CSqliteOutput::SClose::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

void CSqliteOutput::SClose::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

CSqliteOutput::CSqliteOutput(const SOptions& options, const std::string& name)
    : m_options(options), m_target(name, COutputTarget::EUse::ByPath) {
    sqlite3* database = nullptr;
    const int code =
        sqlite3_open_v2(m_target.FilePath().c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    Check(code);
    // Nobody else sees the file before it is complete, and an incomplete one is removed.
    Run("PRAGMA journal_mode = OFF");
    Run("PRAGMA synchronous = OFF");
    Run("PRAGMA locking_mode = EXCLUSIVE");
    Run("PRAGMA cache_size = -65536");
    Run("BEGIN");
}

CSqliteOutput::~CSqliteOutput() = default;

/// Unless it has been done, the table is created with its first row.
void CSqliteOutput::BeginTable(const std::string& input, const std::string& table) {
    m_insert.reset();
    m_columns.clear();
    m_names = CUniqueNames(true);
    if (!std::exchange(m_isAgain, false)) {
        m_longDecimals.clear();
        m_table = Quote(NameTable(input, table));
    }
}

bool CSqliteOutput::EndTable() {
    m_insert.reset();
    if (m_isAgain)
        Run("DROP TABLE " + m_table);
    else if (m_columns.empty())
        m_note = "no table was written for it, because it has no columns";
    return !m_isAgain;
}

/// A name that no other table has, without regard to case, and that SQLite does not reserve for itself.
std::string CSqliteOutput::NameTable(const std::string& input, const std::string& table) {
    const std::string stem = CInputFile::StemOf(input);
    const std::string wanted = table.empty() ? stem : table;
    const auto isReserved = [](const std::string& name) { return ToAsciiLowerText(name).starts_with("sqlite_"); };
    std::string base = isReserved(wanted) ? '_' + wanted : wanted;
    if (m_tables.contains(ToAsciiLowerText(base)) && !table.empty())
        base = (isReserved(stem) ? "_" : "") + stem + '_' + wanted;
    std::string name = base;
    for (int number = 2; !m_tables.insert(ToAsciiLowerText(name)).second; ++number)
        name = base + '_' + std::to_string(number);
    if (name != wanted)
        m_note = "its table in the database is named \"" + name + "\", because the name \"" + wanted +
                 (isReserved(wanted) ? "\" is reserved" : "\" is taken");
    return name;
}

CSqliteOutput::EStore CSqliteOutput::StoreOf(int type) const {
    switch (static_cast<EDataType>(type)) {
    case EDataType::adVariant:
        return EStore::Own;
    case EDataType::adSmallInt:
    case EDataType::adInteger:
    case EDataType::adBoolean:
    case EDataType::adTinyInt:
    case EDataType::adUnsignedTinyInt:
    case EDataType::adUnsignedSmallInt:
    case EDataType::adUnsignedInt:
    case EDataType::adBigInt:
        return EStore::Integer;
    case EDataType::adSingle:
    case EDataType::adDouble:
        return EStore::Real;
    case EDataType::adCurrency:
    case EDataType::adNumeric:
    case EDataType::adDecimal:
    case EDataType::adUnsignedBigInt:
        return EStore::Numeric;
    case EDataType::adBinary:
    case EDataType::adVarBinary:
    case EDataType::adLongVarBinary:
        return m_options.binary ? EStore::Text : EStore::Blob;
    default:
        return EStore::Text;
    }
}

void CSqliteOutput::AddColumn(std::string_view name, EStore store) {
    if (m_longDecimals.contains(m_columns.size()))
        store = EStore::Text;
    m_columns.push_back({m_names.Take(name), store, {}, {}});
}

bool CSqliteOutput::WriteNames(const char* const* names, const WORD* lengths, DWORD count) {
    for (DWORD i = 0; i < count; ++i)
        AddColumn({names[i], lengths[i]}, EStore::Text);
    CreateTable();
    return true;
}

void CSqliteOutput::SetColumns(const std::vector<CLibraryRows::SColumn>& columns, bool /*isNamed*/) {
    for (const CLibraryRows::SColumn& column : columns)
        AddColumn(column.name, StoreOf(column.type));
    CreateTable();
}

void CSqliteOutput::CreateTable() {
    constexpr const char* types[] = {"", " INTEGER", " REAL", " NUMERIC", " TEXT", " BLOB"};
    const auto columnsMax = static_cast<std::size_t>(sqlite3_limit(m_database.get(), SQLITE_LIMIT_COLUMN, -1));
    if (m_columns.empty())
        return;
    if (m_columns.size() > columnsMax)
        throw CFailure(EExitStatus::Limit, m_target.Describe(),
                       "table " + m_table + " would have " + std::to_string(m_columns.size()) +
                           " columns, but SQLite allows " + std::to_string(columnsMax) +
                           "; select some with --columns, or write JSON Lines or CSV");
    std::string statement = "CREATE TABLE " + m_table + " (";
    for (const SColumn& column : m_columns)
        statement += (&column == m_columns.data() ? "" : ", ") + Quote(column.name) +
                     types[static_cast<std::size_t>(column.store)];
    Run(statement + ")");
    Prepare();
}

void CSqliteOutput::Prepare() {
    std::string statement = "INSERT INTO " + m_table + " VALUES (?";
    for (std::size_t i = 1; i < m_columns.size(); ++i)
        statement += ",?";
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v3(m_database.get(), (statement + ")").c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                                        &prepared, nullptr);
    m_insert.reset(prepared);
    Check(code);
}

/// For a row of text with so many fields.
void CSqliteOutput::AddMissingColumns(std::size_t count) {
    const bool isFirst = m_columns.empty();
    if (count <= m_columns.size())
        return;
    if (!isFirst && m_note.empty())
        m_note = "some rows have more fields than there are names; their columns are named by their position, such "
                 "as F" +
                 std::to_string(m_columns.size() + 1);
    while (m_columns.size() < count) {
        AddColumn("", EStore::Text);
        if (!isFirst)
            Run("ALTER TABLE " + m_table + " ADD COLUMN " + Quote(m_columns.back().name) + " TEXT");
    }
    m_names.TakeNote();
    if (isFirst)
        CreateTable();
    else
        Prepare();
}

bool CSqliteOutput::WriteRow(const char* const* fields, const WORD* lengths, DWORD count) {
    AddMissingColumns(count);
    if (m_columns.empty())
        return true;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        Check(i < count ? BindText(static_cast<int>(i) + 1, {fields[i], lengths[i]})
                        : sqlite3_bind_null(m_insert.get(), static_cast<int>(i) + 1));
    Step();
    return true;
}

bool CSqliteOutput::WriteValues(std::span<const tqc_value> values, std::string& loss) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        bool isKept = true;
        Check(Bind(static_cast<int>(i) + 1, m_columns[i], values[i], isKept));
        if (!isKept)
            loss +=
                (loss.empty() ? "column " : ", column ") + std::to_string(i + 1) + " is no number and became NULL";
    }
    if (m_isAgain)
        loss.clear();
    else if (!values.empty())
        Step();
    return !m_isAgain;
}

void CSqliteOutput::Step() {
    const int code = sqlite3_step(m_insert.get());
    if (code != SQLITE_DONE)
        Fail();
    sqlite3_reset(m_insert.get());
}

int CSqliteOutput::Bind(int at, SColumn& column, const tqc_value& value, bool& isKept) {
    const std::string_view text(value.text, value.length);
    switch (value.type) {
    case TQC_VALUE_BOOL:
    case TQC_VALUE_INTEGER:
        return sqlite3_bind_int64(m_insert.get(), at, value.integer);
    case TQC_VALUE_FLOAT:
    case TQC_VALUE_DOUBLE:
        return BindNumber(at, column, value, isKept);
    case TQC_VALUE_DECIMAL:
        return BindDecimal(at, column, text);
    case TQC_VALUE_DATE:
        return BindDate(at, column, value);
    case TQC_VALUE_TEXT:
        return BindText(at, text);
    case TQC_VALUE_BINARY:
        return BindBytes(at, column, text);
    default:
        return sqlite3_bind_null(m_insert.get(), at);
    }
}

/// In a column of text SQLite would make a text of 15 digits. A Single becomes the number that its digits show.
int CSqliteOutput::BindNumber(int at, SColumn& column, const tqc_value& value, bool& isKept) {
    isKept = !std::isnan(value.number);
    if (column.store != EStore::Text && value.type == TQC_VALUE_DOUBLE)
        return sqlite3_bind_double(m_insert.get(), at, value.number);
    const std::string_view text = SCValueText::OfNumber(value, column.text);
    if (column.store == EStore::Text && isKept)
        return BindText(at, text);
    double number = value.number;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return sqlite3_bind_double(m_insert.get(), at, number);
}

int CSqliteOutput::BindDecimal(int at, SColumn& column, std::string_view text) {
    if (column.store == EStore::Text)
        return BindText(at, text);
    const char* const end = text.data() + text.size();
    if (std::int64_t integer = 0; std::from_chars(text.data(), end, integer).ptr == end)
        return sqlite3_bind_int64(m_insert.get(), at, integer);
    if (CountDigits(text) > digitsMax) {
        m_longDecimals.insert(static_cast<std::size_t>(at) - 1);
        m_isAgain = true;
        return SQLITE_OK;
    }
    double number = 0;
    std::from_chars(text.data(), end, number);
    return sqlite3_bind_double(m_insert.get(), at, number);
}

int CSqliteOutput::BindDate(int at, SColumn& column, const tqc_value& value) {
    if (m_options.hasDateForm) {
        column.bytes.resize(Platform::maxDateText);
        return BindText(at, {column.bytes.data(), Platform::FormatDate(value.number, column.bytes.data())});
    }
    const std::size_t size = std::string_view(value.text, value.length).copy(column.text.data(), column.text.size());
    std::replace(column.text.data(), column.text.data() + size, 'T', ' ');
    return BindText(at, {column.text.data(), size});
}

int CSqliteOutput::BindBytes(int at, SColumn& column, std::string_view bytes) {
    if (!m_options.binary)
        return sqlite3_bind_blob64(m_insert.get(), at, bytes.data(), bytes.size(), SQLITE_STATIC);
    if (m_options.binary == SOptions::EBinary::Omit)
        return sqlite3_bind_null(m_insert.get(), at);
    column.bytes = CBinaryText::WholeOf(bytes, *m_options.binary);
    return BindText(at, column.bytes);
}

/// The text must stay until the row is written.
int CSqliteOutput::BindText(int at, std::string_view text) {
    return sqlite3_bind_text64(m_insert.get(), at, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

void CSqliteOutput::Run(const std::string& statement) {
    Check(sqlite3_exec(m_database.get(), statement.c_str(), nullptr, nullptr, nullptr));
}

void CSqliteOutput::Check(int code) {
    if (code != SQLITE_OK)
        Fail();
}

void CSqliteOutput::Fail() {
    const int code = m_database == nullptr ? SQLITE_NOMEM : sqlite3_errcode(m_database.get());
    // SQLite tells what the system said, but for a full disk, which has a code of its own.
    const int systemCode = code == SQLITE_FULL    ? ENOSPC
                           : code == SQLITE_IOERR ? sqlite3_system_errno(m_database.get())
                                                  : 0;
    if (systemCode != 0)
        throw CFailure(EExitStatus::OutputFailed, m_target.Describe(),
                       Platform::GetErrorText(Platform::Port::CodeOfErrno(systemCode)));
    const bool isLimit = code == SQLITE_TOOBIG || code == SQLITE_NOMEM;
    throw CFailure(isLimit ? EExitStatus::Limit : EExitStatus::OutputFailed, m_target.Describe(),
                   "SQLite cannot write it: " +
                       std::string(m_database == nullptr ? "out of memory" : sqlite3_errmsg(m_database.get())));
}

std::string CSqliteOutput::TakeNote() {
    const std::string names = m_names.TakeNote();
    return names.empty() ? std::exchange(m_note, "") : names;
}

void CSqliteOutput::Close() {
    m_insert.reset();
    Run("COMMIT");
    if (const int code = sqlite3_close(m_database.get()); code != SQLITE_OK)
        Fail();
    static_cast<void>(m_database.release());
}

} // namespace NSTQ::Tool
