# bash completion for velloran-rig. The subcommands, the options and the kinds of their values are read from the
# program's own help, so that they are always those of the program that is installed.

# Prints "OPTION KIND" for each option; KIND is the value as the help names it, and nothing for a flag.
# Usage: __velloran_rig_options PROGRAM [SUBCOMMAND]
__velloran_rig_options() {
    "$@" --help 2>/dev/null | sed -nE 's/^  (-[^ ,]+,)?(--[^ ]+)( ([^ =:[]+))?.*/\2 \4/p'
}

# Usage: __velloran_rig_subcommands PROGRAM
__velloran_rig_subcommands() {
    "$1" --help 2>/dev/null | sed -nE '/^Subcommands:/,$s/^  ([a-z]+).*/\1/p'
}

# Usage: __velloran_rig_defects PROGRAM
__velloran_rig_defects() {
    "$1" dvr --list-defects 2>/dev/null | sed -nE 's/^([a-z-]+).*/\1/p'
}

# Usage: __velloran_rig_manners PROGRAM styles|events|habits|weaknesses
__velloran_rig_manners() {
    echo all
    "$1" dvr --list-"$2" --format markdown 2>/dev/null | sed -nE 's/^\| `([a-z-]+)[^|]*\|.*/\1/p'
}

# What a DVR sends. Usage: __velloran_rig_messages PROGRAM
__velloran_rig_messages() {
    "$1" dvr --list-messages --format markdown 2>/dev/null | sed -nE 's/^\| `([A-Z_]+)` \| [^|]+ \| DVR .*/\1/p' | sort -u
}

# Usage: __velloran_rig_cases PROGRAM
__velloran_rig_cases() {
    "$1" run --list-cases 2>/dev/null | cut -d ' ' -f 1
}

# Usage: __velloran_rig_faults PROGRAM
__velloran_rig_faults() {
    "$1" proxy --list-faults --format markdown 2>/dev/null | sed -nE 's/^\| `([a-z0-9-]+).*/\1/p'
}

# Usage: __velloran_rig_fault_groups PROGRAM
__velloran_rig_fault_groups() {
    "$1" proxy --list-faults --format markdown 2>/dev/null | sed -nE 's/^\| `[^|]*\| ([a-z]+) .*/\1/p' | uniq
}

# What the harness sends. Usage: __velloran_rig_requests PROGRAM
__velloran_rig_requests() {
    echo CALL
    "$1" dvr --list-messages --format markdown 2>/dev/null | sed -nE 's/^\| `([A-Z_]+)` \| [^|]+ \| harness .*/\1/p' | sort -u
}

# Completes the value of an option. Usage: __velloran_rig_value PROGRAM KIND
__velloran_rig_value() {
    local choices='' listed
    case $2 in
        'all|NAME,'*)
            listed=${cur%"${cur##*,}"}
            COMPREPLY=($(compgen -P "$listed" -W "all $(__velloran_rig_cases "$1")" -- "${cur##*,}"))
            return
            ;;
        'quick|all|'*)
            listed=${cur%"${cur##*,}"}
            COMPREPLY=($(compgen -P "$listed" -W "quick all $(__velloran_rig_fault_groups "$1") $(__velloran_rig_faults "$1")" -- "${cur##*,}"))
            return
            ;;
        *'|'*) choices=${2//|/ } ;;
        DIR*)
            _filedir -d
            return
            ;;
        FILE* | LOG*)
            _filedir
            return
            ;;
        HOST*)
            _known_hosts_real -- "$cur"
            return
            ;;
        FAULT) choices=$(__velloran_rig_faults "$1") ;;
        REQUEST) choices=$(__velloran_rig_requests "$1") ;;
        NAME) choices=$(__velloran_rig_defects "$1") ;;
        STYLE) choices=$(__velloran_rig_manners "$1" styles) ;;
        HABIT) choices=$(__velloran_rig_manners "$1" habits) ;;
        WEAKNESS) choices=$(__velloran_rig_manners "$1" weaknesses) ;;
        KIND)
            listed=${cur%"${cur##*,}"}
            COMPREPLY=($(compgen -P "$listed" -W "$(__velloran_rig_manners "$1" events)" -- "${cur##*,}"))
            return
            ;;
        MESSAGE*) choices=$(__velloran_rig_messages "$1") ;;
    esac
    COMPREPLY=($(compgen -W "$choices" -- "$cur"))
}

_velloran_rig() {
    local cur prev words cword split program subcommand option kind
    _init_completion -s || return
    program=${words[0]/#\~/$HOME}
    subcommand=
    [ "$cword" -lt 2 ] || subcommand=${words[1]}

    while read -r option kind; do
        if [ "$option" = "$prev" ] && [ -n "$kind" ]; then
            __velloran_rig_value "$program" "$kind"
            return
        fi
    done < <(__velloran_rig_options "$program" $subcommand)

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$(__velloran_rig_options "$program" $subcommand | cut -d ' ' -f 1)" -- "$cur"))
    elif [ -z "$subcommand" ]; then
        COMPREPLY=($(compgen -W "$(__velloran_rig_subcommands "$program")" -- "$cur"))
    else
        _filedir
    fi
}
complete -F _velloran_rig velloran-rig
