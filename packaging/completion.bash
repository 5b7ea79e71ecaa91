# bash completion for SNMPDiscovery.

_SNMPDiscovery() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $current in
        --SNMPPersistPath=*)
            # "=" may or may not be one of the characters that bash breaks words at.
            mapfile -t COMPREPLY < <(compgen -d -P '--SNMPPersistPath=' -- "${current#*=}")
            return ;;
        =)
            [[ $previous == --SNMPPersistPath ]] && mapfile -t COMPREPLY < <(compgen -d)
            return ;;
    esac
    if [[ $previous == "=" ]]; then
        [[ ${COMP_WORDS[COMP_CWORD - 2]} == --SNMPPersistPath ]] &&
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
        return
    fi
    [[ $previous == -c ]] && return
    mapfile -t COMPREPLY < <(compgen -W '-h --help -c --Community= --SNMPPersistPath=' -- "$current")
    [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace
    return 0
}

complete -o filenames -F _SNMPDiscovery SNMPDiscovery
