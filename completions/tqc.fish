# Completion of tqc for fish. The names behind --sheet are those of the file on the line.

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

set -l pages 'shift_jis cp1252 gbk cp949 big5 utf-8'
set -l first 'test (count (commandline -opc)) -eq 1'

complete -c tqc -n $first -a convert -d 'Write files as CSV'
complete -c tqc -n $first -a info -d 'Show what a file is'
complete -c tqc -n $first -a preview -d 'Show the first rows'
complete -c tqc -n $first -a list -d 'List sheets or tables'
complete -c tqc -s h -l help -d 'Show the help'
complete -c tqc -l version -d 'Show the version'
complete -c tqc -n '__fish_seen_subcommand_from list info' -l json -d 'As JSON in UTF-8'
complete -c tqc -x -l type -a 'csv tsv fix xls xlsx mdb accdb xtqf' -d 'What the file is'
complete -c tqc -x -l separator -a tab -d 'The field separator'
complete -c tqc -x -l eol -a 'crlf lf cr' -d 'The line end of the file'
complete -c tqc -x -l encoding -a "auto ansi $pages" -d 'Of the text read'
complete -c tqc -x -l code-page -a $pages -d 'The code page of input and output'
complete -c tqc -x -l widths -d 'The bytes of each column of fixed-length text'
complete -c tqc -x -l sheet -a '(__tqc_sheets)' -d 'The sheet or table'
complete -c tqc -l header -d 'Write the column names first'
complete -c tqc -r -l password-file -d 'The password is the first line of a file'
complete -c tqc -x -l password-fd -d 'The password is the first line read from a descriptor'
complete -c tqc -l no-quote-newline -d 'A line end inside quotes ends the row'
complete -c tqc -x -l max-fields -d 'The most fields kept of a row'
complete -c tqc -x -l max-line-size -d 'Rows of that many bytes are left out'
complete -c tqc -x -l max-field-size -d 'The most bytes kept of a field'
complete -c tqc -x -l skip -d 'Leave out the first rows'
complete -c tqc -x -l limit -d 'Stop after that many rows'
complete -c tqc -r -s o -l output -d 'The file to write'
complete -c tqc -x -l out-dir -a '(__fish_complete_directories)' -d 'Write each file to its own in a folder'
complete -c tqc -x -l output-separator -a tab -d 'The separator to write'
complete -c tqc -x -l output-eol -a 'crlf lf cr' -d 'The line end to write'
complete -c tqc -x -l output-encoding -a $pages -d 'The encoding to write'
complete -c tqc -l add-bom -d 'Write the mark EF BB BF before UTF-8 output'
complete -c tqc -l formula-guard -d 'Write \' before fields that a spreadsheet takes for formulas'
complete -c tqc -x -l numbers -a '15 full' -d 'How many digits numbers show'
complete -c tqc -l quiet -d 'Only errors'
complete -c tqc -x -l on-error -a 'stop skip' -d 'What becomes of rows that cannot be taken whole'
complete -c tqc -r -l rejects -d 'Keep skipped rows in a file'
complete -c tqc -l strict -d 'Rows with a character that the output does not have as well'
complete -c tqc -l replace -d 'Replace such characters'
