// What "tqc --help" and the help of each command say besides the options.
#pragma once

namespace NSTQ::Tool {

class SCHelpText {
public:
    static constexpr const char* description = "Reads a table from a file and writes it as CSV.";

    static constexpr const char* examples = R"(Examples:
  tqc sales.tsv -o sales.csv         convert a file; sales.csv is replaced only when all went well
  tqc sales.txt | head               write to standard output
  tqc data.log --separator ';'       any text file whose separator you know
  tqc old.csv --encoding shift_jis   text in another encoding than the locale's, which the output has
  tqc ledger.txt --widths 3,5,8      fixed-length columns of 3, 5 and 8 bytes; see them with: tqc preview ledger.txt
  tqc sales.xlsx --sheet Q2          a sheet; the first without --sheet; see them with: tqc list sales.xlsx
  tqc data.xtqf --password-file key  a package with a password
  tqc q1.csv q2.csv -o year.csv      several files into one
  tqc *.xlsx --out-dir csv           several files, each into its own
  curl URL | tqc - --type xlsx       standard input
  tqc in.csv -o out.csv --rejects bad.csv

For more see: tqc convert --help, and of the other commands; and: man tqc

Exit status: 0 done (also when the reader of a pipe went away), 1 some rows rejected, cut or with replaced characters,
2 usage, 3 not found or denied, 4 password, 5 unsupported or damaged, 6 limit exceeded, 7 output failed.)";

    static constexpr const char* convert = R"(All options above "Commands" in "tqc --help" apply.

What is found out when it is not told:
  type       from the name's extension; for .txt and unknown ones from the first line: with a TAB tsv, with a comma csv
  line end   the first one outside quotes in the first 64000 bytes: CR LF or LF, CR when there is no LF
  encoding   UTF-8 when the file begins with its mark, else the code page
  code page  from LC_ALL, LC_CTYPE or LANG, utf-8 when these do not tell

UTF-8 is read as it stands, other text in the code page. --encoding is for the input alone: the output is in the code
page unless --output-encoding is given. Characters that it does not have are replaced, with their rows reported, or with --strict end the conversion.

Line ends within quotes and cells stay in their fields, which are written in quotes.

A row of --max-line-size bytes or more is left out, a field over --max-field-size, fields over --max-fields and text
behind the last of --widths are cut off; each such row is reported with its number, counted from 1 in the source. With
--on-error stop the first of them ends the conversion; with --on-error skip they are all left out, as are with --strict
those with characters that the output does not have. --rejects FILE keeps what was left out as CSV: row, offset in
bytes, cause, record, file.

Several inputs into one output must have the same columns; when one of them fails, the output stays as it was. With
--out-dir each output stands for itself: those that fail stay as they were, and the others are converted.

Numbers of workbooks and databases have 15 digits (Single: 7), as spreadsheets show them; --numbers full writes as many
as it takes to read the same number back.

The password of a package, workbook or database comes from --password-file, --password-fd or the terminal, never from
the command line.

Examples:
  tqc convert sales.csv -o out.csv --on-error skip --rejects bad.csv
  tqc convert q1.csv q2.csv --header -o year.csv         the first row of each is its names, written once
  tqc convert web.csv --formula-guard -o for-excel.csv   '=1+2 instead of =1+2; the data change
  tqc convert - --type tsv <in.tsv >out.csv)";

    static constexpr const char* info = R"(--type, --separator, --eol, --encoding and --code-page have a say in it.

Examples:
  tqc info sales.txt
  tqc info sales.txt --code-page 932
  tqc info sales.txt --json | jq -r .characterSet)";

    static constexpr const char* preview =
        R"(The options that tell how to read a file apply: --type, --separator, --widths, --sheet and others.

Examples:
  tqc preview ledger.txt                   fixed-length text under a ruler that counts bytes
  tqc preview ledger.txt --widths 3,5,8    the same as its fields
  tqc preview sales.xlsx --sheet Q2)";

    static constexpr const char* list = R"(Examples:
  tqc list sales.xlsx
  tqc list sales.xlsx --json | jq -r '.tables[].name'
  tqc list orders.accdb --password-file key)";
};

} // namespace NSTQ::Tool
