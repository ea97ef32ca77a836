// The text of "tqc --help" and of the help of each command, apart from the options.
#pragma once

namespace NSTQ::Tool {

class SCHelpText {
public:
    static constexpr const char* description =
        "Reads tables from text, workbooks and databases, and writes CSV, JSON Lines or SQLite.";

    static constexpr const char* examples = R"(Examples:
  tqc sales.tsv -o sales.csv           sales.csv is replaced only after everything has been written
  tqc old.csv --encoding shift_jis     input in another encoding than the locale's
  tqc ledger.txt --widths 3,5,8        columns of 3, 5 and 8 bytes; see: tqc preview ledger.txt
  tqc sales.xlsx --sheet Q2            one sheet; to see their names: tqc list sales.xlsx
  tqc sales.xlsx --all --out-dir csv   every sheet
  tqc orders.accdb -o orders.sqlite    every table of a database
  tqc a.csv --header --columns Name,3  some columns
  tqc q1.csv q2.csv -o year.csv        several files into one output
  curl URL | tqc - --type xlsx         standard input

For more see: tqc convert --help, the help of the other commands, and: man tqc

Exit status: 0 success (also when the reader of a pipe closes it), 1 some rows were rejected,
truncated or had characters replaced, 2 usage, 3 not found or access denied, 4 password,
5 unsupported or damaged file, 6 limit exceeded, 7 writing the output failed.)";

    static constexpr const char* convert = R"(All options above "Commands" in "tqc --help" apply.

Detected automatically, unless an option is given:
  type       by the bytes of workbooks, databases and packages; of text by the extension, for .txt and unknown ones
             by the first line: tsv if it contains a TAB, csv if it contains a comma
  separator  a comma, or a TAB as above; ; | TAB or , instead if it gives rows of equal length and the other does not
  line end   the first one outside quotes in the first 64000 bytes: CR LF or LF; CR only if there is no LF
  encoding   UTF-8 or UTF-16 if the file begins with a BOM, else the code page
  code page  of LC_ALL, LC_CTYPE or LANG; utf-8 if these do not name one

--encoding applies to the input only: utf-8, shift_jis, gbk, cp949, big5, 1252, utf-16le, utf-16be, euc-jp,
windows-874, windows-1250 to -1258, iso-8859-1 to -16. The output is in the code page unless --output-encoding is given.
Characters that it cannot represent are replaced and their rows reported; with --strict they end the conversion.

Line ends inside quotes and cells stay in their fields, which are written in quotes.

Invalid rows: a row of --max-line-size bytes or more is left out; a field longer than --max-field-size, fields beyond
--max-fields and text after the last of --widths are truncated. Each such row is reported with its number, counted from
1 in the source. --on-error stop ends the conversion at the first one; --on-error skip leaves all of them out, with
--strict also rows with characters that the output encoding cannot represent. --rejects FILE writes the rows that were
left out to a CSV file with the columns row, offset (in bytes), cause, record and file.

--skip leaves out lines before the header row, --skip-rows rows after it. --columns takes names, if there is a header
row or a database, numbers from 1 and ranges: Name,3,5-7,9-; a name with a comma in quotes: '"Last, First",2'.

Several inputs of one output must have the same columns; if one of them fails, the output stays unchanged. With
--out-dir each output is independent: those that fail stay unchanged, the others are converted, --jobs of them at the
same time.

--all and patterns of --sheet write DIR/NAME.csv for each sheet or table, DIR/FILE/NAME.csv if there are several inputs.
Names that are invalid on Linux or Windows, or taken, are changed and reported.

Numbers of workbooks and databases have 15 digits (Single: 7), as spreadsheets show them; --numbers full writes as many
as are needed to read the same number back.

The password of a package, workbook or database is read from --password-file, --password-fd or the terminal; it cannot
be given on the command line.

Examples:
  tqc convert sales.csv -o out.csv --on-error skip --rejects bad.csv
  tqc convert q1.csv q2.csv --header -o year.csv         the first row of each is its header row, written once
  tqc convert big.csv --header --skip-rows 1000 --limit 10
  tqc convert report.csv --skip 2 --header --exclude Remarks
  tqc convert web.csv --formula-guard -o for-excel.csv   '=1+2 instead of =1+2; this changes the data
  tqc convert - --type tsv <in.tsv >out.csv)";

    static constexpr const char* info = R"(--type, --separator, --eol, --encoding and --code-page also apply.

Examples:
  tqc info sales.txt
  tqc info sales.txt --code-page 932
  tqc info sales.txt --json | jq -r .characterSet
  tqc info orders.accdb                      each table with its columns, their types and a first row)";

    static constexpr const char* preview =
        R"(The options of the source also apply: --type, --separator, --widths, --sheet and others.

Examples:
  tqc preview ledger.txt                   fixed-length text under a ruler that counts bytes
  tqc preview ledger.txt --widths 3,5,8    the same as fields
  tqc preview sales.xlsx --sheet Q2)";

    static constexpr const char* list = R"(Examples:
  tqc list sales.xlsx
  tqc list sales.xlsx --json | jq -r '.tables[].name'
  tqc list orders.accdb --password-file key)";
};

} // namespace NSTQ::Tool
