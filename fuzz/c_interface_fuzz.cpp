// A file through the interface in C. Its rows as texts, its rows as values and its batches agree in number, and for
// text in their values.
#include "FuzzSupport.h"
#include "tqcAccess.h"

#include <algorithm>

namespace {

using namespace NSTQ::Fuzz;

/// A forged table may have more rows than the file has bytes, so not all are read.
constexpr std::size_t rowsRead = 10'000;
constexpr std::size_t tablesRead = 4;
constexpr std::array types = {TQC_AUTO, TQC_CSV, TQC_TSV, TQC_FIXED};
constexpr std::array<const char*, 4> encodings = {nullptr, "utf-8", "shift_jis", "windows-1252"};
constexpr std::array<std::size_t, 5> batchSizes = {0, 1, 2, 3, 9};
constexpr std::array<std::uint16_t, 3> widths = {3, 1, 8};

/// The rows before the end or the first failure: all that was read, each field with its length.
struct SOutcome {
    tqc_status status = TQC_OK;
    std::size_t rows = 0;
    std::string fields;

    void Add(std::string_view text) { fields.append(std::to_string(text.size())).append(":").append(text); }
};

bool Check(tqc_status status, tqc_error*& error) {
    Require((status <= TQC_END) == (error == nullptr), "a failure has an error");
    if (error != nullptr)
        Require(tqc_error_status(error) == status && *tqc_error_text(error) != '\0', "the error tells the failure");
    tqc_free_error(error);
    error = nullptr;
    return status == TQC_OK;
}

tqc_rows* Open(tqc_source* source, std::size_t table) {
    tqc_rows* rows = nullptr;
    tqc_error* error = nullptr;
    Check(tqc_open_rows(source, table, &rows, &error), error);
    return rows;
}

SOutcome ReadRows(tqc_rows* rows) {
    SOutcome outcome;
    tqc_error* error = nullptr;
    const tqc_field* fields = nullptr;
    std::size_t count = 0;
    while (outcome.rows < rowsRead && Check(outcome.status = tqc_next_row(rows, &fields, &count, &error), error)) {
        ++outcome.rows;
        for (std::size_t i = 0; i < count; ++i)
            if (fields[i].text != nullptr)
                outcome.Add({fields[i].text, fields[i].length});
    }
    return outcome;
}

SOutcome ReadValues(tqc_rows* rows) {
    SOutcome outcome;
    tqc_error* error = nullptr;
    const tqc_value* values = nullptr;
    std::size_t count = 0;
    while (outcome.rows < rowsRead && Check(outcome.status = tqc_next_values(rows, &values, &count, &error), error)) {
        ++outcome.rows;
        for (std::size_t i = 0; i < count; ++i) {
            Require((values[i].text != nullptr) == (values[i].type >= TQC_VALUE_DECIMAL), "what the type names");
            Require(values[i].text == nullptr || values[i].text[values[i].length] == '\0', "a NUL after each text");
            if (values[i].type == TQC_VALUE_TEXT)
                outcome.Add({values[i].text, values[i].length});
        }
    }
    return outcome;
}

void AddBatch(const ArrowArray& batch, SOutcome& outcome) {
    for (std::int64_t row = 0; row < batch.length; ++row)
        for (std::int64_t i = 0; i < batch.n_children; ++i) {
            const ArrowArray& column = *batch.children[i];
            const auto* const valid = static_cast<const unsigned char*>(column.buffers[0]);
            if (column.n_buffers != 3 || (valid != nullptr && (valid[row / 8] >> row % 8 & 1) == 0))
                continue;
            const auto* const ends = static_cast<const std::int32_t*>(column.buffers[1]) + row;
            Require(ends[0] >= 0 && ends[1] >= ends[0], "texts follow each other");
            outcome.Add(
                {static_cast<const char*>(column.buffers[2]) + ends[0], static_cast<std::size_t>(ends[1] - ends[0])});
        }
    outcome.rows += static_cast<std::size_t>(batch.length);
}

SOutcome ReadBatches(tqc_rows* rows, std::size_t size) {
    SOutcome outcome;
    tqc_error* error = nullptr;
    ArrowArray batch{};
    while (outcome.rows < rowsRead && Check(outcome.status = tqc_next_batch(rows, size, &batch, &error), error)) {
        Require(batch.length > 0 && (size == 0 || static_cast<std::size_t>(batch.length) <= size), "its size");
        AddBatch(batch, outcome);
        batch.release(&batch);
    }
    return outcome;
}

void ReadTable(tqc_source* source, std::size_t table, std::size_t batchSize) {
    std::array<tqc_rows*, 3> rows{};
    for (tqc_rows*& opened : rows)
        opened = Open(source, table);
    if (rows.back() != nullptr) {
        const SOutcome texts = ReadRows(rows[0]);
        const SOutcome values = ReadValues(rows[1]);
        const SOutcome batches = ReadBatches(rows[2], batchSize);
        const bool isText = *tqc_source_encoding(source) != '\0';
        Require(texts.status != TQC_END || values.status != TQC_END || texts.rows == values.rows, "as many rows");
        Require(!isText || (texts.status == values.status && texts.fields == values.fields), "the same texts");
        if (texts.status == TQC_END && batches.status == TQC_END) {
            Require(texts.rows == batches.rows, "as many rows");
            Require(!isText || texts.fields == batches.fields, "the same texts");
        }
    }
    for (tqc_rows* const opened : rows)
        tqc_close_rows(opened);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CFuzzInput input(data, size);
    tqc_options options{};
    options.size = sizeof options;
    options.type = input.Pick(types);
    options.encoding = input.Pick(encodings);
    options.separator = input.Pick(std::array{'\0', ',', ';', '\t', '"', '\x81'});
    const std::uint8_t flags = input.Byte();
    options.no_header = flags & 1;
    options.replace_invalid = flags >> 1 & 1;
    options.quotes_end_at_line = flags >> 2 & 1;
    options.widths = widths.data();
    options.width_count = widths.size();
    const std::size_t batchSize = input.Pick(batchSizes);

    const CMemoryFile file(input.Rest());
    tqc_source* source = nullptr;
    tqc_error* error = nullptr;
    if (Check(tqc_open(file.Path().c_str(), &options, &source, &error), error))
        for (std::size_t i = 0; i < std::min(tqc_table_count(source), tablesRead); ++i)
            ReadTable(source, i, batchSize);
    tqc_close_source(source);
    return 0;
}
