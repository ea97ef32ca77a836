# Completion of tqc for bash. The names for --sheet are those of the file on the command line.

# The options that take a value, for finding the file among the words.
_tqc_takes_value() {
    case $1 in
    -o | --output | --out-dir | --type | --separator | --eol | --encoding | --code-page | --widths | --sheet) ;;
    --password-file | --password-fd | --max-fields | --max-line-size | --max-field-size | --skip | --skip-rows) ;;
    --limit | --columns | --exclude) ;;
    --jobs | --output-separator | --output-eol | --output-encoding | --numbers | --on-error | --rejects) ;;
    --to | --binary | --date-format | --time-format | --decimal | --booleans | --null) ;;
    *) return 1 ;;
    esac
}

# The word without its quoting, which is not evaluated.
_tqc_plain() {
    local word=${1//\\/}
    word=${word#[\"\']}
    word=${word%[\"\']}
    printf '%s' "${word/#\~\//$HOME/}"
}

# Sets `arguments` to what "tqc list" needs to open the file on the line.
_tqc_source() {
    local i word file=
    arguments=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if _tqc_takes_value "$word"; then
            [[ ${COMP_WORDS[i + 1]} == = ]] && ((i++))
            case $word in
            --type | --password-file | --code-page) arguments+=("$word" "$(_tqc_plain "${COMP_WORDS[i + 1]}")") ;;
            esac
            ((i++))
        elif [[ -z $file && -f $(_tqc_plain "$word") ]]; then
            file=$(_tqc_plain "$word")
        fi
    done
    [[ -n $file ]] && arguments+=(-- "$file")
}

_tqc_sheets() {
    local name start
    local -a arguments
    _tqc_source || return
    start=$(_tqc_plain "$cur")
    while IFS= read -r name; do
        [[ $name == "$start"* ]] || continue
        # Behind an opening quote the shell takes names as they are.
        [[ $cur == [\"\']* ]] || printf -v name '%q' "$name"
        COMPREPLY+=("$name")
    done < <(command tqc list --names "${arguments[@]}" </dev/null 2>/dev/null)
}

_tqc_words() {
    local IFS=$' \n'
    COMPREPLY=($(compgen -W "$1" -- "$cur"))
}

_tqc_paths() {
    compopt -o filenames 2>/dev/null
    local path
    while IFS= read -r path; do
        COMPREPLY+=("$path")
    done < <(compgen "$1" -- "$cur")
}

_tqc() {
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local pages='shift_jis cp1252 gbk cp949 big5 utf-8'
    local encodings='utf-16 utf-16le utf-16be euc-jp '$(printf '%s ' windows-{874,1250,1251,125{3..8}} iso-8859-{2..11} iso-8859-{13..16})
    local options='--help --version --type --separator --eol --encoding --code-page --widths --sheet --header
        --password-file --password-fd --no-quote-newline --max-fields --max-line-size --max-field-size --skip --skip-rows
        --limit --columns --exclude --output --out-dir --jobs --all --output-separator --output-eol --output-encoding --add-bom
        --formula-guard --numbers --quiet
        --on-error --rejects --strict --replace --to --no-header --binary
        --date-format --time-format --decimal --booleans --null --iso'
    COMPREPLY=()
    # "--option=value" comes as three words.
    if [[ $cur == = ]]; then
        cur=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $previous in
    --sheet) _tqc_sheets; return ;;
    --type) _tqc_words 'csv tsv fix xls xlsx mdb accdb xtqf'; return ;;
    --eol | --output-eol) _tqc_words 'crlf lf cr'; return ;;
    --encoding) _tqc_words "auto ansi $pages $encodings"; return ;;
    --code-page | --output-encoding) _tqc_words "$pages"; return ;;
    --numbers) _tqc_words '15 full'; return ;;
    --to) _tqc_words 'csv jsonl sqlite'; return ;;
    --date-format) _tqc_words 'yyyy-MM-dd dd.MM.yyyy M/d/yyyy'; return ;;
    --time-format) _tqc_words 'HH:mm:ss HH:mm'; return ;;
    --booleans) _tqc_words 'true/false yes/no 1/0'; return ;;
    --binary) _tqc_words 'hex base64 omit'; return ;;
    --on-error) _tqc_words 'stop skip'; return ;;
    --separator | --output-separator) _tqc_words 'tab'; return ;;
    --jobs) _tqc_words 'auto'; return ;;
    --out-dir) _tqc_paths -d; return ;;
    -o | --output | --password-file | --rejects) _tqc_paths -f; return ;;
    esac
    _tqc_takes_value "$previous" && return
    if [[ $cur == -* ]]; then
        [[ ${COMP_WORDS[1]} == list || ${COMP_WORDS[1]} == info ]] && options+=' --json'
        _tqc_words "$options"
        return
    fi
    ((COMP_CWORD == 1)) && _tqc_words 'convert info preview list'
    _tqc_paths -f
}

complete -F _tqc tqc
