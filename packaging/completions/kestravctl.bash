# Completion of kestravctl(1) for bash.

# What the accessories that are attached have in a column of `kestravctl list`.
_kestravctl_attached() {
    kestravctl list 2>/dev/null | awk -v column="$1" 'NR > 1 && $column != "-" { print $column }'
}

_kestravctl() {
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local word command='' operation='' values=0 i
    # The command, the helper's operation, and how many values stand before the word that is being typed.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
            -o | --output | --port | --serial | --disk | --bytes | --sha256 | --jobs | --backup) ((++i)) ;;
            -*) ;;
            *)
                if [[ -z $command ]]; then
                    command=$word
                elif [[ $command == helper && -z $operation ]]; then
                    operation=$word
                else
                    ((++values))
                fi
                ;;
        esac
    done

    COMPREPLY=()
    if [[ $previous == -o || $previous == --output ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        return
    fi
    case $previous in
        --disk) mapfile -t COMPREPLY < <(compgen -W "$(_kestravctl_attached 1)" -- "$cur") && return ;;
        --serial) mapfile -t COMPREPLY < <(compgen -W "$(_kestravctl_attached 2)" -- "$cur") && return ;;
        --port) mapfile -t COMPREPLY < <(compgen -W "$(_kestravctl_attached 3)" -- "$cur") && return ;;
        --bytes | --sha256 | --jobs) return ;;
        --backup)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$cur")
            return
            ;;
    esac
    local words='' files='' chosen='--port --serial --disk' fleet='--all --jobs --wait --backup'
    case $command$operation in
        '') words='detect list drives firmware icon push pull save read write helper doctor --help --version' ;;
        detect) words="--json $chosen --help" ;;
        list | drives | doctor) words='--json --help' ;;
        firmware | icon)
            words="--verify --json --progress --dry-run --sha256 --check --no-prompt --quiet $chosen $fleet --help"
            ((values == 0)) && files='!*.fds'
            [[ $files && $command == icon ]] && files='!*.fif'
            ;;
        push)
            words="--verify --json --progress --dry-run --sha256 --check --no-prompt --quiet $chosen $fleet --help"
            ((values == 1)) && files='-'
            ;;
        write)
            words="$chosen --help"
            ((values == 1)) && files='-'
            ;;
        pull | read) words="--output $chosen --help" ;;
        save)
            words="--bytes $chosen --help"
            ((values == 0)) && words="firmware icon $words"
            ((values == 1)) && files='-'
            ;;
        helper) words='install uninstall status run --help' ;;
        helperrun)
            words='--help'
            ((values == 0)) && words='umount dd --help'
            ;;
        helper*) words='--help' ;;
    esac
    # Options only where one has been begun: a list of files is easier to read without them.
    if [[ $files && $cur != -* ]]; then
        compopt -o filenames 2>/dev/null
        # What ends otherwise is left out, but never a folder. A dash leaves nothing out.
        mapfile -t COMPREPLY < <(compgen -d -- "$cur"; compgen -f -X "$files" -- "$cur")
        mapfile -t COMPREPLY < <(printf '%s\n' "${COMPREPLY[@]}" | sort -u)
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
    fi
}

complete -F _kestravctl kestravctl
