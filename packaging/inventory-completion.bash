# bash completion for snmp-inventory.

_snmp_inventory() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words= path
    COMPREPLY=()
    # bash breaks words at "=" unless COMP_WORDBREAKS says otherwise. Then it completes files itself,
    # which does quoting and "~" as well.
    if [[ $current == --*=* ]]; then
        case ${current%%=*} in
            --tool | --from | --output | --compare | --community-file | --credentials | --mibs)
                compopt -o nospace
                while IFS= read -r path; do
                    [[ ! -d $path ]] || path+=/
                    COMPREPLY+=("${current%%=*}=$(printf %q "$path")")
                done < <(compgen -f -- "${current#*=}")
                return ;;
        esac
        previous=${current%%=*}
    elif [[ $current == = ]]; then
        current=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $previous in
        --tool | --from | --output | --compare | --community-file | --credentials)
            compopt -o default ;;
        --mibs) compopt -o dirnames ;;
        --format)
            words='table json csv html prometheus zabbix addresses'
            if [[ $current == --format=* ]]; then words=" $words" words=${words// / --format=}; fi ;;
        --parallel | --seconds) ;;
        *)
            words='--tool --from --no-ask --printers --format --output --compare --community-file'
            words+=' --credentials --parallel --seconds --mibs --quiet --help --version' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _snmp_inventory snmp-inventory
