# Completion of tqc for fish. The names for --sheet are those of the file on the command line.

function __tqc_sheets
    set -l words (commandline -opc)
    set -l given
    for i in (seq 2 (count $words))
        set -l next (math $i + 1)
        if contains -- $words[$i] --type --password-file --code-page; and test $next -le (count $words)
            set -a given $words[$i] $words[$next]
        end
    end
    for word in $words[2..-1]
        if test -f $word
            tqc list --names $given -- $word </dev/null 2>/dev/null
            return
        end
    end
end

set -l encodings utf-16{,le,be} euc-jp windows-{874,125{0,1,3,4,5,6,7,8}} iso-8859-(seq 2 11) iso-8859-(seq 13 16)
set -l pages 'shift_jis cp1252 gbk cp949 big5 utf-8'
set -l first 'test (count (commandline -opc)) -eq 1'

complete -c tqc -n $first -a convert -d 'Write files as CSV'
complete -c tqc -n $first -a info -d 'Show type, size, time and character set'
complete -c tqc -n $first -a preview -d 'Show the first rows'
complete -c tqc -n $first -a list -d 'List sheets or tables'
complete -c tqc -s h -l help -d 'Show the help'
complete -c tqc -l version -d 'Show the version'
complete -c tqc -n '__fish_seen_subcommand_from list info' -l json -d 'Write JSON in UTF-8'
complete -c tqc -x -l type -a 'csv tsv fix xls xlsx mdb accdb xtqf' -d 'Type of the file'
complete -c tqc -x -l separator -a tab -d 'Field separator'
complete -c tqc -x -l eol -a 'crlf lf cr' -d 'Line end of the file'
complete -c tqc -x -l encoding -a "auto ansi $pages $encodings" -d 'Encoding of the input'
complete -c tqc -x -l code-page -a $pages -d 'Code page of input and output'
complete -c tqc -x -l widths -d 'Width in bytes of each column of fixed-length text'
complete -c tqc -x -l sheet -a '(__tqc_sheets)' -d 'Sheet or table, or a pattern'
complete -c tqc -l header -d 'Write the column names first'
complete -c tqc -r -l password-file -d 'Read the password from the first line of a file'
complete -c tqc -x -l password-fd -d 'Read the password from a file descriptor'
complete -c tqc -l no-quote-newline -d 'A line end inside quotes ends the row'
complete -c tqc -x -l max-fields -d 'Maximum number of fields of a row'
complete -c tqc -x -l max-line-size -d 'Leave out rows of that many bytes'
complete -c tqc -x -l max-field-size -d 'Maximum size of a field in bytes'
complete -c tqc -x -l skip -d 'Leave out lines before the header row'
complete -c tqc -x -l skip-rows -d 'Leave out rows after the header row'
complete -c tqc -x -l limit -d 'Stop after that many rows'
complete -c tqc -x -l columns -d 'Write only these columns'
complete -c tqc -x -l exclude -d 'Write all columns but these'
complete -c tqc -r -s o -l output -d 'Output file'
complete -c tqc -x -l out-dir -a '(__fish_complete_directories)' -d 'Write one output file for each input to a folder'
complete -c tqc -x -l jobs -a auto -d 'Convert that many inputs at the same time'
complete -c tqc -l all -d 'Write every sheet or table to a file of its own'
complete -c tqc -x -l to -a 'csv jsonl sqlite' -d 'Format of the output'
complete -c tqc -x -l binary -a 'hex base64 omit' -d 'Form of bytes of databases'
complete -c tqc -x -l date-format -a 'yyyy-MM-dd dd.MM.yyyy M/d/yyyy' -d 'Form of dates'
complete -c tqc -x -l time-format -a 'HH:mm:ss HH:mm' -d 'Form of times'
complete -c tqc -x -l decimal -d 'Decimal sign of numbers'
complete -c tqc -x -l booleans -a 'true/false yes/no 1/0' -d 'Texts of booleans'
complete -c tqc -x -l null -d 'Text of missing values'
complete -c tqc -l iso -d 'ISO dates, true and false'
complete -c tqc -l no-header -d 'The first row is a row like any other'
complete -c tqc -x -l output-separator -a tab -d 'Separator of the output'
complete -c tqc -x -l output-eol -a 'crlf lf cr' -d 'Line end of the output'
complete -c tqc -x -l output-encoding -a $pages -d 'Encoding of the output'
complete -c tqc -l add-bom -d 'Write a BOM at the beginning of UTF-8 output'
complete -c tqc -l formula-guard -d 'Write \' before fields that spreadsheets treat as formulas'
complete -c tqc -x -l numbers -a '15 full' -d 'Digits of numbers in workbooks and databases'
complete -c tqc -l quiet -d 'Report errors only'
complete -c tqc -x -l on-error -a 'stop skip' -d 'How to handle invalid rows'
complete -c tqc -r -l rejects -d 'Write skipped rows to a file'
complete -c tqc -l strict -d 'Treat rows with unrepresentable characters as invalid'
complete -c tqc -l replace -d 'Replace such characters'
