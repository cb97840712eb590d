# bash completion for ringwell                             -*- shell-script -*-

_ringwell() {
    local cur prev words cword
    _init_completion || return

    local commands="serve open send ring stop-all channels channel preview events why trace
        clear-history stats alarms alarm permission setup-test diagnostics rule
        templates status settings capture devices watch help"

    if ((cword == 1)); then
        COMPREPLY=($(compgen -W "$commands --help --version" -- "$cur"))
        return
    fi

    case ${words[1]} in
        channel) ((cword == 2)) && COMPREPLY=($(compgen -W "show add update delete move" -- "$cur")) ;;
        alarm) ((cword == 2)) && COMPREPLY=($(compgen -W "stop pause resume snooze" -- "$cur")) ;;
        rule) ((cword == 2)) && COMPREPLY=($(compgen -W "explain describe" -- "$cur")) ;;
        setup-test) ((cword == 2)) && COMPREPLY=($(compgen -W "start cancel status" -- "$cur")) ;;
        settings) ((cword == 2)) && COMPREPLY=($(compgen -W "ringThroughMute alarmVolume" -- "$cur")) ;;
        capture) ((cword == 2)) && COMPREPLY=($(compgen -W "status on off apps" -- "$cur")) ;;
        devices) ((cword == 2)) && COMPREPLY=($(compgen -W "list add remove" -- "$cur")) ;;
        watch)
            ((cword == 2)) && { COMPREPLY=($(compgen -W "list add remove" -- "$cur")); return; }
            [[ ${words[2]} == add && $cur == -* ]] &&
                COMPREPLY=($(compgen -W "--every --weekdays --from --to --ring --json" -- "$cur")) ;;
        permission) ((cword == 2)) && COMPREPLY=($(compgen -W "alarms" -- "$cur"))
            ((cword == 3)) && COMPREPLY=($(compgen -W "allow deny" -- "$cur")) ;;
        diagnostics)
            [[ $prev == --output ]] && { _filedir; return; }
            COMPREPLY=($(compgen -W "--output" -- "$cur")) ;;
        *)
            [[ $cur == -* ]] && COMPREPLY=($(compgen -W "--help --json" -- "$cur")) ;;
    esac
} &&
    complete -F _ringwell ringwell
