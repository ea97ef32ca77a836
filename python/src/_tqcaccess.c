/*
 * _tqcaccess: the objects of the Python module over the C interface. The package tqcaccess gives them their Python
 * form; this file knows nothing of pandas and numpy.
 *
 * A source and its rows are used by one thread at a time. The interpreter lock is released while the library reads, so
 * a second thread could come in: it gets a RuntimeError.
 */
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <datetime.h>

#include "tqcAccess.h"

/* The class of exceptions, and that of decimal numbers; set when the module is imported. */
static PyObject* error_class;
static PyObject* decimal_class;

/* ------------------------------------------------------------------------------------------------ errors */

static PyObject* text_of(const char* text) {
    return PyUnicode_DecodeUTF8(text, (Py_ssize_t)strlen(text), "replace");
}

/* Raises the exception for an error and frees it. Returns NULL. */
static PyObject* raise_error(tqc_error* error) {
    PyObject* result;
    if (error == NULL)
        return PyErr_NoMemory();
    result = PyObject_CallFunction(error_class, "iNNNi", (int)tqc_error_status(error), text_of(tqc_error_text(error)),
                                   text_of(tqc_error_path(error)), text_of(tqc_error_table(error)),
                                   (int)tqc_error_code(error));
    tqc_free_error(error);
    if (result != NULL) {
        PyErr_SetObject((PyObject*)Py_TYPE(result), result);
        Py_DECREF(result);
    }
    return NULL;
}

/* ----------------------------------------------------------------------------------------------- objects */

typedef struct {
    PyObject_HEAD
    tqc_source* source;
    int is_busy; /* the lock is released while a thread uses the source or its rows */
} SourceObject;

typedef struct {
    PyObject_HEAD
    SourceObject* owner;
    tqc_rows* rows;
    struct ArrowSchema schema;
    struct ArrowArray batch; /* whose rows are returned one by one; released when there is none */
    Py_ssize_t next;         /* the row of the batch to return next */
} RowsObject;

static int begin_use(SourceObject* owner) {
    if (owner->is_busy) {
        PyErr_SetString(PyExc_RuntimeError, "another thread is using this source");
        return 0;
    }
    owner->is_busy = 1;
    return 1;
}

static int require_open(const void* pointer, const char* what) {
    if (pointer == NULL)
        PyErr_Format(PyExc_ValueError, "the %s is closed", what);
    return pointer != NULL;
}

/* --------------------------------------------------------------------------------------------- one value */

/* Whether the value of a column is missing. */
static int is_null(const struct ArrowArray* column, Py_ssize_t row) {
    const unsigned char* bits = column->buffers[0];
    return column->null_count != 0 && bits != NULL && (bits[row >> 3] >> (row & 7) & 1) == 0;
}

static PyObject* make_datetime(int64_t microseconds) {
    /* Days since 1970-01-01 to a date of the proleptic Gregorian calendar, by eras of 400 years. */
    const int64_t per_day = 86400000000;
    int64_t days = microseconds / per_day;
    int64_t time = microseconds % per_day;
    int64_t era, year;
    unsigned day_of_era, year_of_era, day_of_year, month;
    if (time < 0) {
        time += per_day;
        --days;
    }
    days += 719468;
    era = (days >= 0 ? days : days - 146096) / 146097;
    day_of_era = (unsigned)(days - era * 146097);
    year_of_era = (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    month = (5 * day_of_year + 2) / 153;
    year = (int64_t)year_of_era + era * 400 + (month >= 10 ? 1 : 0);
    if (year < 1 || year > 9999) {
        PyErr_Format(PyExc_ValueError, "a date of the year %lld is out of range", (long long)year);
        return NULL;
    }
    return PyDateTime_FromDateAndTime((int)year, (int)(month < 10 ? month + 3 : month - 9),
                                      (int)(day_of_year - (153 * month + 2) / 5 + 1), (int)(time / 3600000000),
                                      (int)(time / 60000000 % 60), (int)(time / 1000000 % 60), (int)(time % 1000000));
}

/* A decimal number of 128 bits as Python's, from its digits. */
static PyObject* make_decimal(const unsigned char* bytes, int scale) {
    __extension__ typedef unsigned __int128 uint128;
    char digits[64];
    char* at = digits + sizeof digits;
    uint128 value;
    int count = 0;
    int is_negative;
    memcpy(&value, bytes, sizeof value);
    is_negative = (int)(value >> 127);
    if (is_negative)
        value = ~value + 1;
    while (value != 0 || count <= scale) {
        if (count == scale && scale > 0)
            *--at = '.';
        *--at = (char)('0' + (int)(value % 10));
        value /= 10;
        ++count;
    }
    if (is_negative)
        *--at = '-';
    return PyObject_CallFunction(decimal_class, "s#", at, (Py_ssize_t)(digits + sizeof digits - at));
}

/* The texts and bytes of a column lie one after the other. */
static const char* bytes_at(const struct ArrowArray* column, Py_ssize_t row, Py_ssize_t* size) {
    const int32_t* offsets = column->buffers[1];
    *size = offsets[row + 1] - offsets[row];
    return (const char*)column->buffers[2] + offsets[row];
}

static PyObject* make_value(const struct ArrowArray* column, const char* format, Py_ssize_t row) {
    Py_ssize_t size;
    const char* bytes;
    if (is_null(column, row))
        Py_RETURN_NONE;
    switch (format[0]) {
    case 'l':
        return PyLong_FromLongLong(((const int64_t*)column->buffers[1])[row]);
    case 'g':
        return PyFloat_FromDouble(((const double*)column->buffers[1])[row]);
    case 'b':
        return PyBool_FromLong(((const unsigned char*)column->buffers[1])[row >> 3] >> (row & 7) & 1);
    case 't':
        return make_datetime(((const int64_t*)column->buffers[1])[row]);
    case 'd':
        return make_decimal((const unsigned char*)column->buffers[1] + row * 16, atoi(strchr(format, ',') + 1));
    case 'z':
        bytes = bytes_at(column, row, &size);
        return PyBytes_FromStringAndSize(bytes, size);
    default:
        bytes = bytes_at(column, row, &size);
        return PyUnicode_DecodeUTF8(bytes, size, NULL);
    }
}

/* ------------------------------------------------------------------------------------------------- rows */

static void release_batch(RowsObject* self) {
    if (self->batch.release != NULL)
        self->batch.release(&self->batch);
    self->batch.release = NULL;
}

static void close_rows(RowsObject* self) {
    release_batch(self);
    if (self->schema.release != NULL)
        self->schema.release(&self->schema);
    self->schema.release = NULL;
    tqc_close_rows(self->rows);
    self->rows = NULL;
}

static void Rows_dealloc(RowsObject* self) {
    PyTypeObject* type = Py_TYPE(self);
    close_rows(self);
    Py_XDECREF(self->owner);
    type->tp_free(self);
    Py_DECREF(type);
}

static PyObject* Rows_close(RowsObject* self, PyObject* Py_UNUSED(ignored)) {
    if (!begin_use(self->owner))
        return NULL;
    close_rows(self);
    self->owner->is_busy = 0;
    Py_RETURN_NONE;
}

/* Reads the next batch without the lock. 1 when there is one, 0 at the end, -1 with an exception. */
static int read_batch(RowsObject* self, size_t max_rows, struct ArrowArray* batch) {
    tqc_error* error = NULL;
    tqc_status status;
    Py_BEGIN_ALLOW_THREADS
    status = tqc_next_batch(self->rows, max_rows, batch, &error);
    Py_END_ALLOW_THREADS
    if (status == TQC_OK || status == TQC_END)
        return status == TQC_OK;
    raise_error(error);
    return -1;
}

/* The next row as a tuple of values, by batches of a size that keeps them in the cache. None at the end. */
static PyObject* next_values(RowsObject* self) {
    enum { rows_at_once = 512 };
    PyObject* row;
    int64_t i;
    if (self->batch.release == NULL) {
        const int result = read_batch(self, rows_at_once, &self->batch);
        if (result < 0)
            return NULL;
        if (result == 0)
            Py_RETURN_NONE;
        self->next = 0;
    }
    row = PyTuple_New((Py_ssize_t)self->batch.n_children);
    for (i = 0; row != NULL && i < self->batch.n_children; ++i) {
        PyObject* value = make_value(self->batch.children[i], self->schema.children[i]->format, self->next);
        if (value == NULL)
            Py_CLEAR(row);
        else
            PyTuple_SET_ITEM(row, (Py_ssize_t)i, value);
    }
    if (++self->next == self->batch.length)
        release_batch(self);
    return row;
}

static PyObject* Rows_next_values(RowsObject* self, PyObject* Py_UNUSED(ignored)) {
    PyObject* row;
    if (!require_open(self->rows, "reader") || !begin_use(self->owner))
        return NULL;
    row = next_values(self);
    self->owner->is_busy = 0;
    return row;
}

/* The next row as a tuple of texts, as many as it has. */
static PyObject* Rows_next_texts(RowsObject* self, PyObject* Py_UNUSED(ignored)) {
    const tqc_field* fields = NULL;
    size_t count = 0;
    size_t i;
    tqc_error* error = NULL;
    tqc_status status;
    PyObject* row = NULL;
    if (!require_open(self->rows, "reader") || !begin_use(self->owner))
        return NULL;
    Py_BEGIN_ALLOW_THREADS
    status = tqc_next_row(self->rows, &fields, &count, &error);
    Py_END_ALLOW_THREADS
    if (status == TQC_OK) {
        row = PyTuple_New((Py_ssize_t)count);
        for (i = 0; row != NULL && i < count; ++i) {
            PyObject* value = fields[i].text == NULL
                                  ? Py_NewRef(Py_None)
                                  : PyUnicode_DecodeUTF8(fields[i].text, (Py_ssize_t)fields[i].length, NULL);
            if (value == NULL)
                Py_CLEAR(row);
            else
                PyTuple_SET_ITEM(row, (Py_ssize_t)i, value);
        }
    }
    self->owner->is_busy = 0;
    if (status == TQC_END)
        Py_RETURN_NONE;
    return status == TQC_OK ? row : raise_error(error);
}

/* What is missing in a column, as a byte each; None when nothing is. */
static PyObject* make_nulls(const struct ArrowArray* column) {
    PyObject* nulls;
    Py_ssize_t i;
    char* at;
    if (column->null_count == 0)
        Py_RETURN_NONE;
    nulls = PyBytes_FromStringAndSize(NULL, (Py_ssize_t)column->length);
    if (nulls == NULL)
        return NULL;
    at = PyBytes_AS_STRING(nulls);
    for (i = 0; i < column->length; ++i)
        at[i] = (char)is_null(column, i);
    return nulls;
}

/* The values of a column: bytes of numbers in the order of the machine, a byte for each boolean, else a list. */
static PyObject* make_column(const struct ArrowArray* column, const char* format) {
    Py_ssize_t i;
    PyObject* values;
    if (format[0] == 'l' || format[0] == 'g' || format[0] == 't')
        return PyBytes_FromStringAndSize(column->buffers[1], (Py_ssize_t)(column->length * 8));
    if (format[0] == 'b') {
        const unsigned char* bits = column->buffers[1];
        values = PyBytes_FromStringAndSize(NULL, (Py_ssize_t)column->length);
        for (i = 0; values != NULL && i < column->length; ++i)
            PyBytes_AS_STRING(values)[i] = (char)(bits[i >> 3] >> (i & 7) & 1);
        return values;
    }
    values = PyList_New((Py_ssize_t)column->length);
    for (i = 0; values != NULL && i < column->length; ++i) {
        PyObject* value = make_value(column, format, i);
        if (value == NULL)
            Py_CLEAR(values);
        else
            PyList_SET_ITEM(values, i, value);
    }
    return values;
}

/* Takes a batch apart: a pair (values, nulls) for each column. */
static PyObject* make_columns(const struct ArrowArray* batch, const struct ArrowSchema* schema) {
    PyObject* columns = PyList_New((Py_ssize_t)batch->n_children);
    int64_t i;
    for (i = 0; columns != NULL && i < batch->n_children; ++i) {
        struct ArrowArray* column = batch->children[i];
        PyObject* values = make_column(column, schema->children[i]->format);
        PyObject* pair = values == NULL ? NULL : Py_BuildValue("NN", values, make_nulls(column));
        column->release(column); /* the memory of one column less at the same time */
        if (pair == NULL)
            Py_CLEAR(columns);
        else
            PyList_SET_ITEM(columns, (Py_ssize_t)i, pair);
    }
    return columns;
}

/* The next batch in pairs; None at the end. */
static PyObject* Rows_next_columns(RowsObject* self, PyObject* args) {
    Py_ssize_t max_rows = 0;
    struct ArrowArray batch;
    PyObject* columns = NULL;
    int result;
    if (!PyArg_ParseTuple(args, "|n", &max_rows) || !require_open(self->rows, "reader") || !begin_use(self->owner))
        return NULL;
    result = read_batch(self, (size_t)max_rows, &batch);
    if (result > 0) {
        columns = make_columns(&batch, &self->schema);
        batch.release(&batch);
    }
    self->owner->is_busy = 0;
    if (result == 0)
        Py_RETURN_NONE;
    return columns;
}

static void destroy_stream(PyObject* capsule) {
    struct ArrowArrayStream* stream = PyCapsule_GetPointer(capsule, "arrow_array_stream");
    if (stream->release != NULL)
        stream->release(stream);
    PyMem_Free(stream);
}

/* Gives the rows away as a stream in a capsule; they are closed here. */
static PyObject* Rows_export_stream(RowsObject* self, PyObject* Py_UNUSED(ignored)) {
    struct ArrowArrayStream* stream;
    tqc_error* error = NULL;
    PyObject* capsule;
    if (!require_open(self->rows, "reader") || !begin_use(self->owner))
        return NULL;
    self->owner->is_busy = 0; /* the lock is kept until the rows are given away */
    stream = PyMem_Calloc(1, sizeof *stream);
    if (stream == NULL)
        return PyErr_NoMemory();
    if (tqc_export_stream(self->rows, 0, stream, &error) != TQC_OK) {
        PyMem_Free(stream);
        return raise_error(error);
    }
    self->rows = NULL;
    capsule = PyCapsule_New(stream, "arrow_array_stream", &destroy_stream);
    if (capsule == NULL) {
        stream->release(stream);
        PyMem_Free(stream);
    }
    return capsule;
}

static PyObject* Rows_get_columns(RowsObject* self, void* Py_UNUSED(closure)) {
    PyObject* columns;
    size_t i;
    if (!require_open(self->rows, "reader"))
        return NULL;
    columns = PyList_New((Py_ssize_t)tqc_column_count(self->rows));
    for (i = 0; columns != NULL && i < tqc_column_count(self->rows); ++i) {
        PyObject* column = Py_BuildValue("(Nis)", text_of(tqc_column_name(self->rows, i)),
                                         tqc_column_type(self->rows, i), self->schema.children[i]->format);
        if (column == NULL)
            Py_CLEAR(columns);
        else
            PyList_SET_ITEM(columns, (Py_ssize_t)i, column);
    }
    return columns;
}

static PyObject* Rows_get_row_count(RowsObject* self, void* Py_UNUSED(closure)) {
    return require_open(self->rows, "reader") ? PyLong_FromLongLong(tqc_row_count(self->rows)) : NULL;
}

static PyObject* Rows_get_progress(RowsObject* self, void* Py_UNUSED(closure)) {
    return require_open(self->rows, "reader") ? PyLong_FromLong(tqc_progress(self->rows)) : NULL;
}

static PyMethodDef rows_methods[] = {
    {"next_values", (PyCFunction)Rows_next_values, METH_NOARGS, "The next row as a tuple of values; None at the end."},
    {"next_texts", (PyCFunction)Rows_next_texts, METH_NOARGS, "The next row as a tuple of texts; None at the end."},
    {"next_columns", (PyCFunction)Rows_next_columns, METH_VARARGS,
     "The next batch as pairs of values and nulls; None at the end."},
    {"export_stream", (PyCFunction)Rows_export_stream, METH_NOARGS, "The rows as an Arrow stream in a capsule."},
    {"close", (PyCFunction)Rows_close, METH_NOARGS, "Closes the rows."},
    {NULL, NULL, 0, NULL},
};

static PyGetSetDef rows_getset[] = {
    {"columns", (getter)Rows_get_columns, NULL, "Name, number of ADO and format of Arrow of each column.", NULL},
    {"row_count", (getter)Rows_get_row_count, NULL, "The number of rows; -1 when it is unknown.", NULL},
    {"progress", (getter)Rows_get_progress, NULL, "How much has been read, in thousandths.", NULL},
    {NULL, NULL, NULL, NULL, NULL},
};

static PyType_Slot rows_slots[] = {
    {Py_tp_dealloc, (void*)Rows_dealloc},
    {Py_tp_methods, rows_methods},
    {Py_tp_getset, rows_getset},
    {Py_tp_doc, (void*)"The rows of one table."},
    {0, NULL},
};

static PyType_Spec rows_spec = {"tqcaccess._tqcaccess.Rows", sizeof(RowsObject), 0,
                                Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, rows_slots};

static PyTypeObject* rows_type;

/* ----------------------------------------------------------------------------------------------- sources */

static void Source_dealloc(SourceObject* self) {
    PyTypeObject* type = Py_TYPE(self);
    tqc_close_source(self->source);
    type->tp_free(self);
    Py_DECREF(type);
}

static PyObject* Source_close(SourceObject* self, PyObject* Py_UNUSED(ignored)) {
    if (!begin_use(self))
        return NULL;
    tqc_close_source(self->source);
    self->source = NULL;
    self->is_busy = 0;
    Py_RETURN_NONE;
}

static PyObject* Source_find(SourceObject* self, PyObject* args) {
    const char* name;
    size_t table = 0;
    tqc_error* error = NULL;
    if (!PyArg_ParseTuple(args, "s", &name) || !require_open(self->source, "source"))
        return NULL;
    if (tqc_find_table(self->source, name, &table, &error) != TQC_OK)
        return raise_error(error);
    return PyLong_FromSize_t(table);
}

static PyObject* Source_open_rows(SourceObject* self, PyObject* args) {
    Py_ssize_t table = 0;
    tqc_rows* rows = NULL;
    tqc_error* error = NULL;
    tqc_status status;
    RowsObject* object;
    if (!PyArg_ParseTuple(args, "n", &table) || !require_open(self->source, "source"))
        return NULL;
    object = (RowsObject*)rows_type->tp_alloc(rows_type, 0);
    if (object == NULL)
        return NULL;
    object->owner = (SourceObject*)Py_NewRef((PyObject*)self);
    if (!begin_use(self)) {
        Py_DECREF(object);
        return NULL;
    }
    Py_BEGIN_ALLOW_THREADS
    status = tqc_open_rows(self->source, (size_t)table, &rows, &error);
    if (status == TQC_OK)
        status = tqc_get_schema(rows, &object->schema, &error);
    Py_END_ALLOW_THREADS
    self->is_busy = 0;
    object->rows = rows;
    if (status == TQC_OK)
        return (PyObject*)object;
    Py_DECREF(object);
    return raise_error(error);
}

static PyObject* Source_get_tables(SourceObject* self, void* Py_UNUSED(closure)) {
    PyObject* names;
    size_t i;
    if (!require_open(self->source, "source"))
        return NULL;
    names = PyList_New((Py_ssize_t)tqc_table_count(self->source));
    for (i = 0; names != NULL && i < tqc_table_count(self->source); ++i) {
        PyObject* name = text_of(tqc_table_name(self->source, i));
        if (name == NULL)
            Py_CLEAR(names);
        else
            PyList_SET_ITEM(names, (Py_ssize_t)i, name);
    }
    return names;
}

static PyObject* Source_get_type(SourceObject* self, void* Py_UNUSED(closure)) {
    return require_open(self->source, "source") ? PyLong_FromLong(tqc_source_type(self->source)) : NULL;
}

static PyObject* Source_get_encoding(SourceObject* self, void* Py_UNUSED(closure)) {
    return require_open(self->source, "source") ? text_of(tqc_source_encoding(self->source)) : NULL;
}

static PyMethodDef source_methods[] = {
    {"find", (PyCFunction)Source_find, METH_VARARGS, "The position of a table by its name."},
    {"open_rows", (PyCFunction)Source_open_rows, METH_VARARGS, "Opens the rows of a table by its position."},
    {"close", (PyCFunction)Source_close, METH_NOARGS, "Closes the source."},
    {NULL, NULL, 0, NULL},
};

static PyGetSetDef source_getset[] = {
    {"tables", (getter)Source_get_tables, NULL, "The names of the tables.", NULL},
    {"type", (getter)Source_get_type, NULL, "The number of the type.", NULL},
    {"encoding", (getter)Source_get_encoding, NULL, "The encoding of text.", NULL},
    {NULL, NULL, NULL, NULL, NULL},
};

static PyType_Slot source_slots[] = {
    {Py_tp_dealloc, (void*)Source_dealloc},
    {Py_tp_methods, source_methods},
    {Py_tp_getset, source_getset},
    {Py_tp_doc, (void*)"An open source."},
    {0, NULL},
};

static PyType_Spec source_spec = {"tqcaccess._tqcaccess.Source", sizeof(SourceObject), 0,
                                  Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, source_slots};

static PyTypeObject* source_type;

/* ------------------------------------------------------------------------------------------------ writer */

typedef struct {
    PyObject_HEAD
    tqc_writer* writer;
    tqc_field* fields; /* of one row */
    Py_ssize_t capacity;
} WriterObject;

static void Writer_dealloc(WriterObject* self) {
    PyTypeObject* type = Py_TYPE(self);
    tqc_close_writer(self->writer, NULL);
    PyMem_Free(self->fields);
    type->tp_free(self);
    Py_DECREF(type);
}

static PyObject* Writer_close(WriterObject* self, PyObject* Py_UNUSED(ignored)) {
    tqc_writer* writer = self->writer;
    tqc_error* error = NULL;
    tqc_status status;
    self->writer = NULL;
    Py_BEGIN_ALLOW_THREADS
    status = tqc_close_writer(writer, &error);
    Py_END_ALLOW_THREADS
    if (status != TQC_OK)
        return raise_error(error);
    Py_RETURN_NONE;
}

/* Makes room for the fields of a row. False with an exception. */
static int reserve_fields(WriterObject* self, Py_ssize_t count) {
    tqc_field* fields = self->fields;
    if (count <= self->capacity)
        return 1;
    PyMem_Resize(fields, tqc_field, (size_t)count);
    if (fields == NULL) {
        PyErr_NoMemory();
        return 0;
    }
    self->fields = fields;
    self->capacity = count;
    return 1;
}

/* The lock is kept: nobody changes the list meanwhile, which owns the bytes of its texts. */
static PyObject* Writer_write(WriterObject* self, PyObject* args) {
    PyObject* row;
    Py_ssize_t i;
    tqc_error* error = NULL;
    if (!PyArg_ParseTuple(args, "O!", &PyList_Type, &row) || !require_open(self->writer, "writer") ||
        !reserve_fields(self, PyList_GET_SIZE(row)))
        return NULL;
    for (i = 0; i < PyList_GET_SIZE(row); ++i) {
        PyObject* text = PyList_GET_ITEM(row, i);
        Py_ssize_t size = 0;
        self->fields[i].text = text == Py_None ? NULL : PyUnicode_AsUTF8AndSize(text, &size);
        self->fields[i].length = (size_t)size;
        if (self->fields[i].text == NULL && text != Py_None)
            return NULL;
    }
    if (tqc_write_row(self->writer, self->fields, (size_t)PyList_GET_SIZE(row), &error) != TQC_OK)
        return raise_error(error);
    Py_RETURN_NONE;
}

static PyMethodDef writer_methods[] = {
    {"write", (PyCFunction)Writer_write, METH_VARARGS, "Writes a list of texts and None as a row."},
    {"close", (PyCFunction)Writer_close, METH_NOARGS, "Writes what is left and closes the file."},
    {NULL, NULL, 0, NULL},
};

static PyType_Slot writer_slots[] = {
    {Py_tp_dealloc, (void*)Writer_dealloc},
    {Py_tp_methods, writer_methods},
    {Py_tp_doc, (void*)"A file of CSV that is written."},
    {0, NULL},
};

static PyType_Spec writer_spec = {"tqcaccess._tqcaccess.Writer", sizeof(WriterObject), 0,
                                  Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, writer_slots};

static PyTypeObject* writer_type;

/* ------------------------------------------------------------------------------------------------ module */

/* The widths of a sequence. The caller frees them with PyMem_Free. False with an exception. */
static int take_widths(PyObject* sequence, uint16_t** widths, size_t* count) {
    Py_ssize_t i;
    PyObject* fast;
    if (sequence == Py_None)
        return 1;
    fast = PySequence_Fast(sequence, "widths must be a sequence of integers");
    if (fast == NULL)
        return 0;
    *count = (size_t)PySequence_Fast_GET_SIZE(fast);
    *widths = PyMem_Calloc(*count + 1, sizeof **widths);
    for (i = 0; *widths != NULL && i < (Py_ssize_t)*count; ++i) {
        const long width = PyLong_AsLong(PySequence_Fast_GET_ITEM(fast, i));
        if (!PyErr_Occurred() && (width < 1 || width > 65535))
            PyErr_SetString(PyExc_ValueError, "a width must be from 1 to 65535 bytes");
        if (PyErr_Occurred())
            break;
        (*widths)[i] = (uint16_t)width;
    }
    Py_DECREF(fast);
    if (*widths == NULL)
        PyErr_NoMemory();
    return !PyErr_Occurred();
}

static PyObject* module_open(PyObject* Py_UNUSED(module), PyObject* args) {
    const char* path;
    const char* separator = NULL;
    int type = 0;
    int header = 1;
    int replace = 0;
    PyObject* widths_object = Py_None;
    uint16_t* widths = NULL;
    tqc_options options;
    tqc_error* error = NULL;
    tqc_status status;
    SourceObject* object;
    memset(&options, 0, sizeof options);
    options.size = sizeof options;
    if (!PyArg_ParseTuple(args, "sizzzppO", &path, &type, &options.password, &options.encoding, &separator, &header,
                          &replace, &widths_object) ||
        !take_widths(widths_object, &widths, &options.width_count)) {
        PyMem_Free(widths);
        return NULL;
    }
    options.type = (tqc_type)type;
    options.separator = separator == NULL ? 0 : separator[0];
    options.no_header = (char)!header;
    options.replace_invalid = (char)replace;
    options.widths = widths;
    object = (SourceObject*)source_type->tp_alloc(source_type, 0);
    if (object == NULL) {
        PyMem_Free(widths);
        return NULL;
    }
    Py_BEGIN_ALLOW_THREADS
    status = tqc_open(path, &options, &object->source, &error);
    Py_END_ALLOW_THREADS
    PyMem_Free(widths);
    if (status == TQC_OK)
        return (PyObject*)object;
    Py_DECREF(object);
    return raise_error(error);
}

static PyObject* module_open_writer(PyObject* Py_UNUSED(module), PyObject* args) {
    const char* path;
    const char* separator;
    int lf_only;
    tqc_writer_options options;
    tqc_error* error = NULL;
    tqc_status status;
    WriterObject* object;
    memset(&options, 0, sizeof options);
    options.size = sizeof options;
    if (!PyArg_ParseTuple(args, "szsp", &path, &options.encoding, &separator, &lf_only))
        return NULL;
    options.separator = separator[0];
    options.lf_only = (char)lf_only;
    object = (WriterObject*)writer_type->tp_alloc(writer_type, 0);
    if (object == NULL)
        return NULL;
    Py_BEGIN_ALLOW_THREADS
    status = tqc_open_writer(path, &options, &object->writer, &error);
    Py_END_ALLOW_THREADS
    if (status == TQC_OK)
        return (PyObject*)object;
    Py_DECREF(object);
    return raise_error(error);
}

static PyObject* module_set_error_class(PyObject* Py_UNUSED(module), PyObject* function) {
    Py_XSETREF(error_class, Py_NewRef(function));
    Py_RETURN_NONE;
}

static PyMethodDef module_methods[] = {
    {"open", module_open, METH_VARARGS, "Opens a source."},
    {"open_writer", module_open_writer, METH_VARARGS, "Creates a file of CSV."},
    {"set_error_class", module_set_error_class, METH_O, "What makes the exception for an error."},
    {NULL, NULL, 0, NULL},
};

static struct PyModuleDef module_definition = {
    PyModuleDef_HEAD_INIT, "tqcaccess._tqcaccess", "The objects of tqcaccess over the C interface.", -1, module_methods,
    NULL, NULL, NULL, NULL};

PyMODINIT_FUNC PyInit__tqcaccess(void) {
    PyObject* module = PyModule_Create(&module_definition);
    PyObject* decimal = PyImport_ImportModule("decimal");
    PyDateTime_IMPORT;
    if (decimal != NULL)
        decimal_class = PyObject_GetAttrString(decimal, "Decimal");
    Py_XDECREF(decimal);
    source_type = (PyTypeObject*)PyType_FromSpec(&source_spec);
    rows_type = (PyTypeObject*)PyType_FromSpec(&rows_spec);
    writer_type = (PyTypeObject*)PyType_FromSpec(&writer_spec);
    if (module == NULL || decimal_class == NULL || PyDateTimeAPI == NULL || source_type == NULL || rows_type == NULL ||
        writer_type == NULL || PyModule_AddStringConstant(module, "version", tqc_version()) < 0) {
        Py_XDECREF(module);
        return NULL;
    }
    return module;
}
