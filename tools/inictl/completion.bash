# Completion of inictl for bash: commands, files, options, and the sections and keys of the file.

# A word as it was typed, without its quotes; nothing in it is run.
_inictl_plain() {
    local word=${1//[\\\"\']/}
    printf %s "${word/#\~\//$HOME/}"
}

_inictl() {
    local current=${COMP_WORDS[COMP_CWORD]} word program=${COMP_WORDS[0]}
    local -a words=() candidates=()
    local i
    # bash splits at "=" and ":"; what is completed is then the part behind.
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        case $word in
            --*) [[ ${COMP_WORDS[i + 1]-} == = ]] && ((i += 2)) ;;
            *) words+=("$word") ;;
        esac
    done
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    [[ $current == = ]] && current= || { [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}; }
    local command=${words[0]-} file count=${#words[@]}
    file=$(_inictl_plain "${words[1]-}")

    case $previous in
        --encoding | --to)
            mapfile -t COMPREPLY < <(compgen -W 'utf-8 cp1251 utf-16le utf-16be utf-32le utf-32be' -- "$current")
            return
            ;;
        --format)
            local formats='text json sh tsv'
            [[ $command == diff ]] && formats='text edit'
            mapfile -t COMPREPLY < <(compgen -W "$formats" -- "$current")
            return
            ;;
        --default | --comment) return ;;
    esac
    if [[ $current == -* ]]; then
        local options='--encoding= --help --version'
        case $command in
            get) options+=' --default=' ;;
            list) options+=' --sections --keys --format=' ;;
            diff) options+=' --format=' ;;
            set) options+=' --comment=' ;;
            convert) options+=' --to= --mark' ;;
        esac
        case $command in
            set | delete | rename | merge | edit | convert) options+=' --dry-run --backup --classic --lossy' ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
        return
    fi
    case $count:$command in
        0:*) mapfile -t COMPREPLY < <(compgen -W 'get has list set delete rename merge edit diff convert check' -- "$current") ;;
        1:* | 2:merge | 2:diff)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            compopt -o filenames
            ;;
        2:get | 2:has | 2:list | 2:set | 2:delete | 2:rename)
            mapfile -t candidates < <("$program" list "$file" --sections 2>/dev/null)
            ;;
        3:get | 3:has | 3:set | 3:delete | 3:rename)
            mapfile -t candidates < <("$program" list "$file" "$(_inictl_plain "${words[2]}")" --keys 2>/dev/null)
            ;;
    esac
    # Names may hold anything: what is offered is quoted as the shell needs it.
    local plain
    plain=$(_inictl_plain "$current")
    for word in "${candidates[@]}"; do
        [[ ${word,,} == "${plain,,}"* ]] && COMPREPLY+=("$(printf %q "$word")")
    done
}
complete -F _inictl inictl
