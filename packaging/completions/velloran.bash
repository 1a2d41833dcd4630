# bash completion for velloran

_velloran() {
    local cur prev words cword split
    _init_completion -s || return
    case $prev in
        -p | --protocol)
            COMPREPLY=($(compgen -W '1 2' -- "$cur"))
            return
            ;;
        -c | --close | -d | --done | -s) return ;;
    esac
    COMPREPLY=($(compgen -W '-p --protocol -c --close -d --done -s -e --event -f --file -t --transport -r --rehash
        -x --xfer -z --size -g --config -u --upgrade -h --help' -- "$cur"))
}
complete -F _velloran velloran
