# bash completion for voxtrelctl
# SPDX-License-Identifier: Apache-2.0

_voxtrelctl()
{
    local commands="say silence stop lock break-lock status languages voices get set enable disable profile
                    monitor doctor"
    local settings="speed pitch voice volume bg-volume tts-volume language rate verbosity"
    local features="speech speed pitch voice volume bg-volume tts-volume"
    local languages="en_US fr_FR es_ES ko_KR pt_PT"
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local command="" at
    for ((at = 1; at < COMP_CWORD; at++)); do
        case ${COMP_WORDS[at]} in
            --trust-owner) at=$((at + 1)) ;;
            -*) ;;
            *) command=${COMP_WORDS[at]}; break ;;
        esac
    done

    COMPREPLY=()
    if [[ -z $command ]]; then
        if [[ $previous == --trust-owner ]]; then
            COMPREPLY=($(compgen -u -- "$current"))
        else
            COMPREPLY=($(compgen -W "$commands --spawn --trust-owner --help --version --verbose" -- "$current"))
        fi
        return
    fi
    case $previous in
        --lang)
            COMPREPLY=($(compgen -W "$languages" -- "$current"))
            return ;;
        --file | -f | --profile)
            COMPREPLY=($(compgen -f -- "$current"))
            return ;;
        --timeout | --voice | --speed | --pitch | --volume | --bg-volume | --tts-volume | --count | --process)
            return ;;
    esac
    case $command in
        say)
            COMPREPLY=($(compgen -W "--wait --ssml --json --file --lang --voice --speed --pitch --volume
                --bg-volume --tts-volume --profile --timeout --verbose --help" -- "$current")) ;;
        silence) COMPREPLY=($(compgen -W "--wait --timeout --verbose --help" -- "$current")) ;;
        stop) COMPREPLY=($(compgen -W "--process --timeout --verbose --help" -- "$current")) ;;
        lock)
            if [[ $previous == lock ]]; then
                COMPREPLY=($(compgen -W "--timeout --" -- "$current"))
            else
                COMPREPLY=($(compgen -c -- "$current"))
            fi ;;
        voices) COMPREPLY=($(compgen -W "$languages --json --timeout --verbose --help" -- "$current")) ;;
        get) COMPREPLY=($(compgen -W "$settings --json --timeout --verbose --help" -- "$current")) ;;
        set)
            case $previous in
                set) COMPREPLY=($(compgen -W "$settings" -- "$current")) ;;
                language) COMPREPLY=($(compgen -W "$languages" -- "$current")) ;;
                verbosity) COMPREPLY=($(compgen -W "0 1" -- "$current")) ;;
            esac ;;
        enable | disable) COMPREPLY=($(compgen -W "$features --timeout --verbose --help" -- "$current")) ;;
        profile)
            if [[ $previous == profile ]]; then
                COMPREPLY=($(compgen -W "show save load copy remove" -- "$current"))
            else
                COMPREPLY=($(compgen -f -- "$current"))
            fi ;;
        status | languages | doctor)
            COMPREPLY=($(compgen -W "--json --timeout --verbose --help" -- "$current")) ;;
        monitor) COMPREPLY=($(compgen -W "--json --count --timeout --verbose --help" -- "$current")) ;;
        *) COMPREPLY=($(compgen -W "--timeout --verbose --help" -- "$current")) ;;
    esac
}

complete -F _voxtrelctl voxtrelctl
