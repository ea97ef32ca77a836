// The C interface: opaque objects, and no exception leaves it.
#include "tqcAccess.h"

#include "CBatch.h"
#include "CCsvOutPut.h"
#include "CFault.h"
#include "CSourceFile.h"
#include "CTabularRows.h"
#include "CTextRows.h"
#include "common/SCFilePath.h"
#include "platform/codepage/AsciiCase.h"
#include "platform/codepage/Transcode.h"
#include "platform/errors/LastError.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/CodePageNames.h"
#include "tqcAccess/ComError.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <string_view>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using namespace NSTQ::Platform;

struct tqc_error {
    tqc_status status = TQC_NO_MEMORY;
    std::int32_t code = 0;
    std::string text;
    std::string path;
    std::string table;
};

struct tqc_source {
    std::shared_ptr<const CSourceFile> file;
};

struct tqc_rows {
    std::shared_ptr<const CSourceFile> file;
    std::string table;
    std::unique_ptr<IRows> rows;
    std::unique_ptr<CBatch> batch; ///< none before the first one
    tqc_status failed = TQC_OK;    ///< why reading cannot go on
};

struct tqc_writer {
    std::string path;
    unsigned codePage = CP_UTF8;
    CCsvOutPut output;
    std::string text;     ///< the fields of a row in the output's encoding
    std::string original; ///< a field before it was converted
    std::string back;     ///< and after it was converted back
    std::vector<const char*> fields;
    std::vector<WORD> lengths;
};

namespace {

constexpr std::size_t maxFieldSize = 65535;

/// What an error is about.
struct SSubject {
    std::string_view path;
    std::string_view table;
};

/// Stands for an error for which there is no memory; it is never freed.
tqc_error& GetMemoryError() {
    static tqc_error error;
    return error;
}

void Store(tqc_error** error, tqc_status status, std::int32_t code, const SSubject& subject,
           std::string_view text) noexcept {
    if (error == nullptr)
        return;
    tqc_free_error(*error);
    *error = &GetMemoryError();
    try {
        auto stored = std::make_unique<tqc_error>();
        stored->status = status;
        stored->code = code;
        stored->path = subject.path;
        stored->table = subject.table;
        // Providers name the file themselves.
        if (!subject.path.empty() && !text.starts_with(std::string(subject.path) + ":"))
            stored->text = std::string(subject.path) + ": ";
        if (!subject.table.empty() && text.find(subject.table) == std::string_view::npos)
            stored->text += "table \"" + std::string(subject.table) + "\": ";
        stored->text += text;
        *error = stored.release();
    } catch (const std::bad_alloc&) {
        // The one without memory stays.
    }
}

tqc_status StatusOf(const CFault& fault) {
    return fault.GetCode() == ERROR_NOT_ENOUGH_MEMORY ? TQC_NO_MEMORY : fault.GetStatus();
}

tqc_status StatusOf(const _com_error& error) {
    if (error.Error() == DB_SEC_E_AUTH_FAILED || dynamic_cast<const CPassWordError*>(&error) != nullptr)
        return TQC_PASSWORD;
    switch (error.Error()) {
    case DB_E_NOTABLE:
        return TQC_NOT_FOUND;
    case DB_E_DATAOVERFLOW:
        return TQC_LIMIT;
    case E_OUTOFMEMORY:
        return TQC_NO_MEMORY;
    default:
        return TQC_UNSUPPORTED;
    }
}

/// Calls `action`, and turns what it throws into an error.
template <class TAction>
tqc_status Guard(tqc_error** error, const SSubject& subject, TAction action) noexcept {
    tqc_status status = TQC_NO_MEMORY;
    try {
        return action();
    } catch (const CFault& fault) {
        status = StatusOf(fault);
        Store(error, status, fault.GetCode(), subject, fault.what());
    } catch (const _com_error& failure) {
        status = StatusOf(failure);
        Store(error, status, failure.Error(), subject, failure.what());
    } catch (const std::bad_alloc&) {
        Store(error, status, 0, subject, "not enough memory");
    } catch (const std::exception& exception) {
        status = TQC_UNSUPPORTED;
        Store(error, status, 0, subject, exception.what());
    }
    return status;
}

[[noreturn]] void FailWithArgument(const char* what) {
    throw CFault(TQC_INVALID_ARGUMENT, what);
}

void Require(bool condition, const char* what) {
    if (!condition)
        FailWithArgument(what);
}

/// The options of a program that may have been built with a shorter or a longer struct; what it does not have is
/// zero.
template <class TOptions>
TOptions TakeOptions(const TOptions* options) {
    TOptions taken{};
    if (options == nullptr)
        return taken;
    Require(options->size >= sizeof options->size, "the size of the options is not set");
    std::memcpy(&taken, options, std::min(options->size, sizeof taken));
    return taken;
}

SSubject SubjectOf(const tqc_rows& rows) {
    return {rows.file->GetPath(), rows.table};
}

/// Reads with the pages of the source; a failure other than invalid text is final.
template <class TAction>
tqc_status Read(tqc_rows* rows, tqc_error** error, TAction action) noexcept {
    const tqc_status status = Guard(error, SubjectOf(*rows), [&] {
        if (rows->failed != TQC_OK)
            throw CFault(rows->failed, "reading has failed before");
        const CThreadCodePage page(rows->file->GetCodePage(), CP_UTF8);
        return action();
    });
    if (status != TQC_OK && status != TQC_END && status != TQC_INVALID_ARGUMENT && status != TQC_INVALID_TEXT)
        rows->failed = status;
    return status;
}

std::size_t FindTable(const CSourceFile& file, std::string_view name) {
    const auto& tables = file.GetTables();
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (tables[i].name == name)
            return i;
        if (IsEqualIgnoringCase(tables[i].name, name))
            found.push_back(i);
    }
    if (found.size() == 1)
        return found[0];
    std::string text =
        (found.empty() ? "no table \"" : "several tables are named like \"") + std::string(name) + "\"; there are: ";
    for (const auto& table : tables)
        text += (&table == tables.data() ? "" : ", ") + table.name;
    throw CFault(TQC_NOT_FOUND, text);
}

/// Checks a field at `text`, and converts it in place to the encoding of the output. Returns its new length.
std::size_t EncodeField(tqc_writer& writer, char* text, std::size_t length) {
    if (CountValidUtf8(text, length) != length)
        throw CFault(TQC_INVALID_TEXT, "invalid UTF-8");
    if (writer.codePage != CP_UTF8) {
        writer.original.assign(text, length);
        length = ConvertUtf8ToAnsi(reinterpret_cast<unsigned char*>(text), length);
        writer.back.resize(std::max(writer.back.size(), length * maxUtf8PerByte));
        const std::size_t size = ConvertAnsiToUtf8({text, length}, writer.back.data()).length;
        if (std::string_view(writer.back.data(), size) != writer.original)
            throw CFault(TQC_INVALID_TEXT,
                         "characters that " + std::string(GetCodePageName(writer.codePage)) + " does not have");
    }
    if (length > maxFieldSize)
        throw CFault(TQC_LIMIT, "more than 65535 bytes");
    return length;
}

/// Converts a row, so that a row with an invalid field is not written in part.
void EncodeRow(tqc_writer& writer, const tqc_field* fields, std::size_t count) {
    std::size_t room = 0;
    for (std::size_t i = 0; i < count; ++i)
        room += fields[i].text == nullptr ? 0 : fields[i].length;
    writer.text.resize(std::max(writer.text.size(), room));
    writer.fields.resize(count);
    writer.lengths.resize(count);
    char* to = writer.text.data();
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t length = fields[i].text == nullptr ? 0 : fields[i].length;
        if (length > 0)
            std::memcpy(to, fields[i].text, length);
        try {
            writer.lengths[i] = static_cast<WORD>(EncodeField(writer, to, length));
        } catch (const CFault& fault) {
            throw CFault(fault.GetStatus(), "field " + std::to_string(i + 1) + ": " + fault.what());
        }
        writer.fields[i] = to;
        to += writer.lengths[i];
    }
}

/// The writer takes only absolute paths.
std::string MakeAbsolute(const char* path) {
    if (SCFilePath::IsAbsolutePath(path))
        return path;
    const std::u8string absolute = std::filesystem::absolute(reinterpret_cast<const char8_t*>(path)).u8string();
    return {absolute.begin(), absolute.end()};
}

void CheckOutput(tqc_writer& writer) {
    if (const DWORD code = writer.output.GetErrorCode(); code != 0)
        throw CFault(TQC_IO, GetErrorText(code), static_cast<std::int32_t>(code));
}

/// What an Arrow stream owns.
struct SStream {
    std::unique_ptr<tqc_rows> rows;
    std::size_t batchRows;
    std::string lastError;
};

SStream& GetStream(ArrowArrayStream* stream) {
    return *static_cast<SStream*>(stream->private_data);
}

int FinishStreamCall(SStream& stream, tqc_status status, tqc_error* error) noexcept {
    if (status == TQC_OK || status == TQC_END)
        return 0;
    try {
        stream.lastError = tqc_error_text(error);
    } catch (const std::bad_alloc&) {
        stream.lastError.clear();
    }
    tqc_free_error(error);
    return status == TQC_NO_MEMORY ? ENOMEM : status == TQC_INVALID_TEXT ? EILSEQ : EIO;
}

int GetStreamSchema(ArrowArrayStream* stream, ArrowSchema* schema) {
    tqc_error* error = nullptr;
    const tqc_status status = tqc_get_schema(GetStream(stream).rows.get(), schema, &error);
    return FinishStreamCall(GetStream(stream), status, error);
}

int GetNextOfStream(ArrowArrayStream* stream, ArrowArray* batch) {
    tqc_error* error = nullptr;
    const tqc_status status =
        tqc_next_batch(GetStream(stream).rows.get(), GetStream(stream).batchRows, batch, &error);
    if (status == TQC_END)
        *batch = {};
    return FinishStreamCall(GetStream(stream), status, error);
}

const char* GetLastErrorOfStream(ArrowArrayStream* stream) {
    const std::string& text = GetStream(stream).lastError;
    return text.empty() ? nullptr : text.c_str();
}

void ReleaseStream(ArrowArrayStream* stream) {
    const CThreadCodePage page(CP_UTF8);
    delete &GetStream(stream);
    stream->release = nullptr;
}

} // namespace

tqc_status tqc_error_status(const tqc_error* error) {
    return error->status;
}

const char* tqc_error_text(const tqc_error* error) {
    return error == &GetMemoryError() ? "not enough memory" : error->text.c_str();
}

const char* tqc_error_path(const tqc_error* error) {
    return error->path.c_str();
}

const char* tqc_error_table(const tqc_error* error) {
    return error->table.c_str();
}

std::int32_t tqc_error_code(const tqc_error* error) {
    return error->code;
}

void tqc_free_error(tqc_error* error) {
    if (error != &GetMemoryError())
        delete error;
}

const char* tqc_version(void) {
    return TQC_VERSION;
}

tqc_status tqc_open(const char* path, const tqc_options* options, tqc_source** source, tqc_error** error) {
    return Guard(error, {path == nullptr ? "" : path, ""}, [&] {
        Require(path != nullptr && *path != '\0' && source != nullptr, "no path, or no place for the source");
        const tqc_options taken = TakeOptions(options);
        Require(taken.type >= TQC_AUTO && taken.type <= TQC_XTQF, "unknown type");
        Require(taken.width_count == 0 || taken.widths != nullptr, "the widths are missing");
        const unsigned ansiCodePage = GetAnsiCodePage();
        const CThreadCodePage page(CP_UTF8);
        auto opened = std::make_unique<tqc_source>();
        opened->file = std::make_shared<const CSourceFile>(path, taken, ansiCodePage);
        *source = opened.release();
        return TQC_OK;
    });
}

void tqc_close_source(tqc_source* source) {
    const CThreadCodePage page(CP_UTF8);
    delete source;
}

tqc_type tqc_source_type(const tqc_source* source) {
    return source->file->GetType();
}

const char* tqc_source_encoding(const tqc_source* source) {
    return source->file->IsText() ? GetCodePageName(source->file->GetCodePage()).data() : "";
}

std::size_t tqc_table_count(const tqc_source* source) {
    return source->file->GetTables().size();
}

const char* tqc_table_name(const tqc_source* source, std::size_t table) {
    const auto& tables = source->file->GetTables();
    return table < tables.size() ? tables[table].name.c_str() : nullptr;
}

tqc_status tqc_find_table(const tqc_source* source, const char* name, std::size_t* table, tqc_error** error) {
    return Guard(error, {source->file->GetPath(), ""}, [&] {
        Require(name != nullptr && table != nullptr, "no name, or no place for the position");
        *table = FindTable(*source->file, name);
        return TQC_OK;
    });
}

tqc_status tqc_open_rows(tqc_source* source, std::size_t table, tqc_rows** rows, tqc_error** error) {
    const CSourceFile& file = *source->file;
    const auto& tables = file.GetTables();
    const std::string_view name = table < tables.size() ? std::string_view(tables[table].name) : "";
    return Guard(error, {file.GetPath(), name}, [&] {
        Require(rows != nullptr, "no place for the rows");
        if (table >= tables.size())
            throw CFault(TQC_NOT_FOUND, "there is no table " + std::to_string(table));
        const CThreadCodePage page(file.GetCodePage(), CP_UTF8);
        auto opened = std::make_unique<tqc_rows>();
        opened->file = source->file;
        opened->table = name;
        if (file.IsText())
            opened->rows = std::make_unique<CTextRows>(source->file);
        else
            opened->rows = std::make_unique<CTabularRows>(file.GetData(), tables[table].listed);
        *rows = opened.release();
        return TQC_OK;
    });
}

void tqc_close_rows(tqc_rows* rows) {
    const CThreadCodePage page(CP_UTF8);
    delete rows;
}

std::size_t tqc_column_count(const tqc_rows* rows) {
    return rows->rows->GetColumns().size();
}

const char* tqc_column_name(const tqc_rows* rows, std::size_t column) {
    const auto& columns = rows->rows->GetColumns();
    return column < columns.size() ? columns[column].name.c_str() : nullptr;
}

int tqc_column_type(const tqc_rows* rows, std::size_t column) {
    const auto& columns = rows->rows->GetColumns();
    return column < columns.size() ? columns[column].dataType : 0;
}

std::int64_t tqc_row_count(const tqc_rows* rows) {
    return rows->rows->GetCount();
}

int tqc_progress(const tqc_rows* rows) {
    return rows->rows->GetProgress();
}

tqc_status tqc_next_row(tqc_rows* rows, const tqc_field** fields, std::size_t* count, tqc_error** error) {
    return Read(rows, error, [&] {
        Require(fields != nullptr && count != nullptr, "no place for the fields");
        if (!rows->rows->MoveNext())
            return TQC_END;
        const auto texts = rows->rows->GetTexts();
        *fields = texts.data();
        *count = texts.size();
        return TQC_OK;
    });
}

tqc_status tqc_next_values(tqc_rows* rows, const tqc_value** values, std::size_t* count, tqc_error** error) {
    return Read(rows, error, [&] {
        Require(values != nullptr && count != nullptr, "no place for the values");
        if (!rows->rows->MoveNext())
            return TQC_END;
        const auto row = rows->rows->GetValues();
        *values = row.data();
        *count = row.size();
        return TQC_OK;
    });
}

tqc_status tqc_get_schema(tqc_rows* rows, ArrowSchema* schema, tqc_error** error) {
    return Read(rows, error, [&] {
        Require(schema != nullptr, "no place for the schema");
        CBatch::Describe(rows->rows->GetColumns(), *schema);
        return TQC_OK;
    });
}

tqc_status tqc_next_batch(tqc_rows* rows, std::size_t max_rows, ArrowArray* batch, tqc_error** error) {
    const tqc_status status = Read(rows, error, [&] {
        if (batch == nullptr)
            FailWithArgument("no place for the batch");
        if (!rows->batch)
            rows->batch = std::make_unique<CBatch>(*rows->rows);
        return rows->batch->Read(max_rows, *batch) ? TQC_OK : TQC_END;
    });
    // What was collected of a batch that cannot be completed would be lost or repeated.
    if (status == TQC_INVALID_TEXT)
        rows->failed = status;
    return status;
}

tqc_status tqc_export_stream(tqc_rows* rows, std::size_t batch_rows, ArrowArrayStream* stream, tqc_error** error) {
    return Guard(error, SubjectOf(*rows), [&] {
        Require(stream != nullptr, "no place for the stream");
        auto owned = std::make_unique<SStream>();
        owned->batchRows = batch_rows;
        owned->rows.reset(rows);
        *stream = {};
        stream->get_schema = &GetStreamSchema;
        stream->get_next = &GetNextOfStream;
        stream->get_last_error = &GetLastErrorOfStream;
        stream->release = &ReleaseStream;
        stream->private_data = owned.release();
        return TQC_OK;
    });
}

tqc_status tqc_open_writer(const char* path, const tqc_writer_options* options, tqc_writer** writer,
                           tqc_error** error) {
    return Guard(error, {path == nullptr ? "" : path, ""}, [&] {
        Require(path != nullptr && *path != '\0' && writer != nullptr, "no path, or no place for the writer");
        const tqc_writer_options taken = TakeOptions(options);
        auto opened = std::make_unique<tqc_writer>();
        opened->path = path;
        if (taken.encoding != nullptr)
            opened->codePage = FindCodePage(taken.encoding);
        Require(opened->codePage != 0, "unknown encoding");
        if (taken.separator != 0)
            opened->output.SetSeparator(taken.separator);
        if (taken.lf_only != 0)
            opened->output.SetDelimiter(SCDataAccessDefine::LF_CODE, SCDataAccessDefine::NULL_CODE);
        opened->output.SetQuoteLineEnds(true);
        const CThreadCodePage page(CP_UTF8);
        const std::string absolute = MakeAbsolute(path);
        if (!opened->output.FileOpen(absolute.c_str())) {
            const DWORD code = opened->output.GetErrorCode();
            throw CFault(TQC_IO, code == 0 ? "the name is invalid" : GetErrorText(code),
                         static_cast<std::int32_t>(code));
        }
        *writer = opened.release();
        return TQC_OK;
    });
}

tqc_status tqc_write_row(tqc_writer* writer, const tqc_field* fields, std::size_t count, tqc_error** error) {
    return Guard(error, {writer->path, ""}, [&] {
        Require(fields != nullptr || count == 0, "no fields");
        const CThreadCodePage page(writer->codePage, CP_UTF8);
        EncodeRow(*writer, fields, count);
        writer->output.WriteLineData(writer->fields.data(), writer->lengths.data(), static_cast<DWORD>(count));
        CheckOutput(*writer);
        return TQC_OK;
    });
}

tqc_status tqc_close_writer(tqc_writer* writer, tqc_error** error) {
    if (writer == nullptr)
        return TQC_OK;
    const std::unique_ptr<tqc_writer> closed(writer);
    return Guard(error, {closed->path, ""}, [&] {
        closed->output.FileClose();
        CheckOutput(*closed);
        return TQC_OK;
    });
}
