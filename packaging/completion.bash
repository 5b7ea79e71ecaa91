# bash completion for SNMPDiscovery.

_SNMPDiscovery() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} folder
    COMPREPLY=()
    # bash breaks words at "=" unless COMP_WORDBREAKS says otherwise. Then it completes folders
    # itself, which does quoting and "~" as well.
    if [[ $current == = ]]; then
        [[ $previous != --SNMPPersistPath ]] || compopt -o dirnames
    elif [[ $previous == = ]]; then
        [[ ${COMP_WORDS[COMP_CWORD - 2]} != --SNMPPersistPath ]] || compopt -o dirnames
    elif [[ $current == --SNMPPersistPath=* ]]; then
        compopt -o nospace
        while IFS= read -r folder; do
            COMPREPLY+=("--SNMPPersistPath=$(printf %q "$folder")/")
        done < <(compgen -d -- "${current#*=}")
    elif [[ $previous != -c ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-h --help -c --Community= --SNMPPersistPath=' -- "$current")
        [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != *= ]] || compopt -o nospace
    fi
}

complete -F _SNMPDiscovery SNMPDiscovery
