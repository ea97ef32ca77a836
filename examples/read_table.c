/*
 * read_table FILE [TABLE]: prints the columns with their types and the rows of a sheet, table or text, in C.
 */
#include "tqcAccess.h"

#include <stdio.h>

/* Prints why something failed. Returns the exit status. */
static int fail(tqc_error* error) {
    fprintf(stderr, "%s\n", tqc_error_text(error));
    tqc_free_error(error);
    return 1;
}

static int print_rows(tqc_rows* rows) {
    const tqc_field* fields;
    size_t count;
    size_t i;
    tqc_error* error = NULL;
    tqc_status status;

    for (i = 0; i < tqc_column_count(rows); ++i)
        printf("%s%s (type %d)", i > 0 ? ", " : "", tqc_column_name(rows, i), tqc_column_type(rows, i));
    printf("\n");
    while ((status = tqc_next_row(rows, &fields, &count, &error)) == TQC_OK) {
        for (i = 0; i < count; ++i)
            printf("%s%s", i > 0 ? ", " : "", fields[i].text == NULL ? "(null)" : fields[i].text);
        printf("\n");
    }
    return status == TQC_END ? 0 : fail(error);
}

static int print_table(tqc_source* source, const char* name) {
    size_t table = 0;
    tqc_rows* rows = NULL;
    tqc_error* error = NULL;
    int result;

    if ((name != NULL && tqc_find_table(source, name, &table, &error) != TQC_OK) ||
        tqc_open_rows(source, table, &rows, &error) != TQC_OK)
        return fail(error);
    result = print_rows(rows);
    tqc_close_rows(rows);
    return result;
}

int main(int argc, char** argv) {
    tqc_source* source = NULL;
    tqc_error* error = NULL;
    int result;

    if (argc < 2) {
        fprintf(stderr, "usage: read_table FILE [TABLE]\n");
        return 2;
    }
    if (tqc_open(argv[1], NULL, &source, &error) != TQC_OK)
        return fail(error);
    result = print_table(source, argc > 2 ? argv[2] : NULL);
    tqc_close_source(source);
    return result;
}
