/**
 * @file
 * tqcAccess.h: the library for programs in C and in every language that can call C.
 *
 * A program opens a source (text, workbook, database or package), looks at its tables, and reads the rows of one: row
 * by row as texts or values, or in batches of typed columns. A source of text and a package have one table. A writer
 * makes CSV.
 *
 *     tqc_error* error = NULL;
 *     tqc_source* source;
 *     tqc_rows* rows;
 *     if (tqc_open("orders.accdb", NULL, &source, &error) == TQC_OK &&
 *         tqc_open_rows(source, 0, &rows, &error) == TQC_OK) {
 *         const tqc_field* fields;
 *         size_t count;
 *         while (tqc_next_row(rows, &fields, &count, &error) == TQC_OK)
 *             ...
 *     }
 *
 * Texts    All texts, also paths and passwords, are UTF-8. Those that the library returns are NUL-terminated; the
 *          length of a field does not count the NUL, and a field may contain NULs only if its source does.
 * Errors   A function that can fail returns a status and takes `error`: NULL, or the address of a pointer that is
 *          NULL or of an earlier error, which is then replaced. On failure it receives an object that the caller
 *          frees with tqc_free_error; with TQC_OK and TQC_END it is unchanged. Results are unchanged on failure.
 *          No C++ exception leaves a function.
 * Memory   What a function opens or returns to be freed has a function for that, which accepts NULL. Pointers inside
 *          an object are valid as long as its description says.
 * Threads  One thread at a time uses a source and its rows, or a writer; it need not always be the same thread.
 *          Different ones are independent and may be used at the same time: each source has its own encoding.
 *          The library itself starts a thread only where tqc_options asks for it by `read_ahead`.
 * Structs  Structs of options begin with their size, so that a program built with an older header goes on working.
 *          Initialize them with zeros: zero is the default of each option.
 */
#pragma once

#include "tqcAccess/Export.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a function returns. */
typedef enum tqc_status {
    TQC_OK = 0,               /**< success */
    TQC_END = 1,              /**< there is no further row or batch */
    TQC_INVALID_ARGUMENT = 2, /**< a parameter or option is invalid */
    TQC_NOT_FOUND = 3,        /**< no such file, folder or table, or access denied */
    TQC_PASSWORD = 4,         /**< the password is missing or wrong */
    TQC_UNSUPPORTED = 5,      /**< a type that the library does not read, or a damaged source */
    TQC_LIMIT = 6,            /**< a row or value is larger than the library can return */
    TQC_IO = 7,               /**< reading or writing failed */
    TQC_INVALID_TEXT = 8,     /**< bytes that are invalid in the encoding, or characters that it does not have */
    TQC_NO_MEMORY = 9         /**< there is not enough memory */
} tqc_status;

/** The type of a source. */
typedef enum tqc_type {
    TQC_AUTO = 0,  /**< as an option: by extension and first bytes */
    TQC_CSV = 1,   /**< delimited text, with a comma as the default separator */
    TQC_TSV = 2,   /**< delimited text, with a TAB as the default separator */
    TQC_FIXED = 3, /**< fixed-length text */
    TQC_XLS = 4,   /**< Excel 2003 workbook */
    TQC_MDB = 5,   /**< Access 2003 database */
    TQC_XLSX = 6,  /**< Excel 2007 workbook */
    TQC_ACCDB = 7, /**< Access 2007 database */
    TQC_XTQF = 8   /**< package with a data file of delimited text */
} tqc_type;

/* ------------------------------------------------------------------------------------------------ errors */

/** Why a function failed. */
typedef struct tqc_error tqc_error;

/** The status that was returned; never TQC_OK or TQC_END. */
TQCACCESS_API tqc_status tqc_error_status(const tqc_error* error);
/** What failed, where and why, as a sentence without a line end: "orders.csv: row 7: ...". Valid as long as the
   error, like the next two. */
TQCACCESS_API const char* tqc_error_text(const tqc_error* error);
/** The path of the source or output as it was given; empty when none is concerned. */
TQCACCESS_API const char* tqc_error_path(const tqc_error* error);
/** The name of the table; empty when none is concerned, and for text. */
TQCACCESS_API const char* tqc_error_table(const tqc_error* error);
/** The code below: an HRESULT (negative) of a workbook or database, a Windows error code of a file, else 0. */
TQCACCESS_API int32_t tqc_error_code(const tqc_error* error);
/** Frees an error; NULL is allowed. */
TQCACCESS_API void tqc_free_error(tqc_error* error);

/** The version of the library, such as "1.0.0". */
TQCACCESS_API const char* tqc_version(void);

/* ----------------------------------------------------------------------------------------------- sources */

/** An open source. */
typedef struct tqc_source tqc_source;

/** How a source is opened. */
typedef struct tqc_options {
    size_t size;          /**< sizeof(tqc_options) */
    tqc_type type;        /**< of the source */
    const char* password; /**< of a package, workbook or database; NULL for none */
    const char* encoding; /**< of text: "utf-8", "shift_jis", "cp1252", ...; NULL: UTF-8 if it begins with a BOM or
                             the first 64000 bytes are valid UTF-8, else the ANSI code page of the process */
    char separator;       /**< of delimited text; 0: that of the type */
    char no_header;       /**< not 0: the first row of text and of sheets is a row like any other, and the columns
                             are named F1, F2, ...; tables of databases have names anyway */
    char replace_invalid; /**< not 0: bytes that are invalid in the encoding become U+FFFD in UTF-8, else the default
                             character of the code page, such as U+30FB in Shift_JIS; 0: they are an error */
    char quotes_end_at_line; /**< not 0: a line end inside quotes ends the row; else it is content */
    const uint16_t* widths;  /**< of the columns of fixed-length text, in bytes */
    size_t width_count;      /**< the number of `widths` */
    char read_ahead; /**< not 0: the rows of an xlsx workbook are read ahead by a thread of the library, which has
                        ended when tqc_open_rows has failed or tqc_close_rows returns; else the library starts no
                        thread. Other sources and small sheets are read without */
} tqc_options;

/** Opens the source at `path`; `options` may be NULL. A package is unpacked into a temporary folder, which
   tqc_close_source removes. */
TQCACCESS_API tqc_status tqc_open(const char* path, const tqc_options* options, tqc_source** source,
                                  tqc_error** error);
/** Closes the source; NULL is allowed. Rows that were opened stay valid. */
TQCACCESS_API void tqc_close_source(tqc_source* source);

/** The type of the source; never TQC_AUTO. */
TQCACCESS_API tqc_type tqc_source_type(const tqc_source* source);
/** The name of the encoding of text, such as "shift_jis"; empty for workbooks and databases. */
TQCACCESS_API const char* tqc_source_encoding(const tqc_source* source);
/** The number of sheets, or of tables and views; 1 for text. */
TQCACCESS_API size_t tqc_table_count(const tqc_source* source);
/** By position from 0, in the order of the source; NULL when there is none. Empty for text. Valid as long as the
   source. */
TQCACCESS_API const char* tqc_table_name(const tqc_source* source, size_t table);
/** The position of a table by its name: exactly, or else ignoring the case of ASCII letters if only one is meant.
   TQC_NOT_FOUND names the others. */
TQCACCESS_API tqc_status tqc_find_table(const tqc_source* source, const char* name, size_t* table, tqc_error** error);

/* -------------------------------------------------------------------------------------------------- rows */

/** The rows of one table, read forward once. */
typedef struct tqc_rows tqc_rows;

/** A text; `text` is NULL for a missing value (null) of a workbook or database, `length` is in bytes. */
typedef struct tqc_field {
    const char* text; /**< NUL-terminated, except in a row to write */
    size_t length;    /**< in bytes, without the NUL */
} tqc_field;

/** Opens a table by its position, before its first row. */
TQCACCESS_API tqc_status tqc_open_rows(tqc_source* source, size_t table, tqc_rows** rows, tqc_error** error);
/** Closes the rows; NULL is allowed. */
TQCACCESS_API void tqc_close_rows(tqc_rows* rows);

/** The columns: for text as many as the header row or else the first row has. */
TQCACCESS_API size_t tqc_column_count(const tqc_rows* rows);
/** By position from 0; NULL when there is none. Valid as long as the rows. */
TQCACCESS_API const char* tqc_column_name(const tqc_rows* rows, size_t column);
/** ADO's number for the type (DataTypeEnum), such as 3 for integers, 5 for floating-point numbers, 7 for dates and
   202 for text, which all columns of text sources have and all columns of sheets whose cells differ; 0 when there is
   no such column. */
TQCACCESS_API int tqc_column_type(const tqc_rows* rows, size_t column);
/** The number of rows without the header row; -1 for text, which does not tell. */
TQCACCESS_API int64_t tqc_row_count(const tqc_rows* rows);
/** How much has been read, in thousandths. */
TQCACCESS_API int tqc_progress(const tqc_rows* rows);

/** Reads the next row as texts, which are valid until the next call with these rows. A row of delimited text has as
   many fields as it has in the file; the fields of text are cleaned as IDataAccess says (spaces around them, control
   bytes), values of workbooks and databases are complete, in the form that the user locale gives them. TQC_END after
   the last row. After a failure the rows can only be closed, except after TQC_INVALID_TEXT, which skips the row.

   TQC_LIMIT: a row of text with more than 65535 bytes. */
TQCACCESS_API tqc_status tqc_next_row(tqc_rows* rows, const tqc_field** fields, size_t* count, tqc_error** error);

/** What a value is. */
typedef enum tqc_value_type {
    TQC_VALUE_NULL = 0,    /**< missing */
    TQC_VALUE_BOOL = 1,    /**< `integer` is 0 or 1 */
    TQC_VALUE_INTEGER = 2, /**< `integer` */
    TQC_VALUE_FLOAT = 3,   /**< `number`, which has the precision of a float: 9 digits tell it */
    TQC_VALUE_DOUBLE = 4, /**< `number`: 17 digits tell it; it may be infinite or a NaN if the source has such ones */
    TQC_VALUE_DECIMAL = 5, /**< `text`: all digits of a decimal number or of currency, such as -12.5, without an
                              exponent and without zeros at the end of the fraction */
    TQC_VALUE_DATE = 6,    /**< `text`: the date as ISO 8601 writes it, rounded to the millisecond: 2024-05-06,
                              2024-05-06T07:08:09 or 2024-05-06T07:08:09.120; the time alone when the day is 1899-12-30.
                              `number`: days since 1899-12-30, where the absolute value of the fraction is the time */
    TQC_VALUE_TEXT = 7,    /**< `text`, UTF-8 */
    TQC_VALUE_BINARY = 8   /**< `text` is the bytes */
} tqc_value_type;

/** A value with the type that it has itself, whatever the type of its column. What its type does not name is zero. */
typedef struct tqc_value {
    tqc_value_type type; /**< which of the others have a meaning */
    int64_t integer;     /**< of a boolean and an integer */
    double number;       /**< of a floating-point number and a date */
    const char* text;    /**< with a NUL at the end, which is not counted */
    size_t length;       /**< of the text, in bytes */
} tqc_value;

/** Reads the next row as values, which are valid until the next call with these rows. Everything else is as with
   tqc_next_row, and calls of both may follow each other: all values are complete, those of text sources are texts,
   and a row of delimited text has as many as it has in the file. The user locale does not matter. */
TQCACCESS_API tqc_status tqc_next_values(tqc_rows* rows, const tqc_value** values, size_t* count, tqc_error** error);

/* ----------------------------------------------------------------------------------------------- batches */

/** The Arrow C data interface; see arrow.apache.org/docs/format/CDataInterface.html. */
/** @cond their members are described there */
#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE
#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4
struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    int64_t flags;
    int64_t n_children;
    struct ArrowSchema** children;
    struct ArrowSchema* dictionary;
    void (*release)(struct ArrowSchema*);
    void* private_data;
};
struct ArrowArray {
    int64_t length;
    int64_t null_count;
    int64_t offset;
    int64_t n_buffers;
    int64_t n_children;
    const void** buffers;
    struct ArrowArray** children;
    struct ArrowArray* dictionary;
    void (*release)(struct ArrowArray*);
    void* private_data;
};
#endif
#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE
struct ArrowArrayStream {
    int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
    int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
    const char* (*get_last_error)(struct ArrowArrayStream*);
    void (*release)(struct ArrowArrayStream*);
    void* private_data;
};
#endif
/** @endcond */

/** The columns as a struct type; the caller calls `schema->release`. The types, by Arrow's format strings:
     l (int64)                all integers
     g (float64)              floating-point numbers
     d:19,4 (decimal128)      currency
     d:P,S                    decimal numbers with the precision and scale of the column
     tsu: (timestamp, us)     dates, without a time zone
     b (bool)
     u (utf8)                 texts, GUIDs
     z (binary)               binary values, all of their bytes
   Missing values are nulls. The fields of text sources are never null; a short row of delimited text gives nulls for
   the fields that it lacks. */
TQCACCESS_API tqc_status tqc_get_schema(tqc_rows* rows, struct ArrowSchema* schema, tqc_error** error);

/** Reads the next rows, at most `max_rows` (0: as many as are sensible), into a new struct array, which the caller
   owns: it calls `batch->release`, also after the rows are closed. A batch also ends once its values exceed 16 MiB,
   so that it always fits offsets of 32 bits. TQC_END when there is no further row. Rows that tqc_next_row has read
   are not in it. After a failure, also TQC_INVALID_TEXT, the rows can only be closed, and those that were collected
   for this batch are lost.

   TQC_LIMIT: as for tqc_next_row; a row of delimited text with more fields than there are columns; a decimal number
   with more digits than its column; a value of more than 1 GiB. */
TQCACCESS_API tqc_status tqc_next_batch(tqc_rows* rows, size_t max_rows, struct ArrowArray* batch, tqc_error** error);

/** Turns the rows into a stream for an engine that reads Arrow; the stream owns them from now on, and `rows` must not
   be used any more. `batch_rows` is as `max_rows` above. Errors of the stream are errno codes with a sentence. On
   failure the rows are still the caller's. */
TQCACCESS_API tqc_status tqc_export_stream(tqc_rows* rows, size_t batch_rows, struct ArrowArrayStream* stream,
                                           tqc_error** error);

/* ------------------------------------------------------------------------------------------------ writer */

/** Writes CSV. */
typedef struct tqc_writer tqc_writer;

/** How CSV is written. */
typedef struct tqc_writer_options {
    size_t size;          /**< sizeof(tqc_writer_options) */
    const char* encoding; /**< of the output; NULL: UTF-8 */
    char separator;       /**< 0: ',' */
    char lf_only;         /**< not 0: rows end in LF, else in CR LF */
} tqc_writer_options;

/** Creates the file, or empties an existing one; `options` may be NULL. */
TQCACCESS_API tqc_status tqc_open_writer(const char* path, const tqc_writer_options* options, tqc_writer** writer,
                                         tqc_error** error);
/** Writes a row; a field with a NULL text is empty. Fields with the separator, a quote or a line end are quoted.
   TQC_LIMIT: a field of more than 65535 bytes in the output's encoding; TQC_INVALID_TEXT: invalid UTF-8, or
   characters that the encoding does not have. Then nothing of the row is written. */
TQCACCESS_API tqc_status tqc_write_row(tqc_writer* writer, const tqc_field* fields, size_t count, tqc_error** error);
/** Writes what is still in the buffer, closes the file and frees the writer, also on failure. */
TQCACCESS_API tqc_status tqc_close_writer(tqc_writer* writer, tqc_error** error);

#ifdef __cplusplus
}
#endif
