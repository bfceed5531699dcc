# Completion of kestravctl(1) for bash.

_kestravctl() {
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local word command='' operation='' values=0 i
    # The command, the helper's operation, and how many values stand before the word that is being typed.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
            -o | --output) ((++i)) ;;
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
    local words='' files=''
    case $command$operation in
        '') words='detect drives firmware icon push pull read write helper --help --version' ;;
        detect | drives) words='--json --help' ;;
        firmware | icon)
            words='--verify --json --progress --quiet --help'
            ((values == 0)) && files='!*.fds'
            [[ $files && $command == icon ]] && files='!*.fif'
            ;;
        push)
            words='--verify --json --progress --quiet --help'
            ((values == 1)) && files='-'
            ;;
        write)
            words='--help'
            ((values == 1)) && files='-'
            ;;
        pull) words='--help' ;;
        read) words='--output --help' ;;
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
