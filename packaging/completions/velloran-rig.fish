# fish completion for velloran-rig. The subcommands, the options and the kinds of their values are read from the
# program's own help when it is first completed, so that they are always those of the program that is installed.

# What a DVR sends.
function __velloran_rig_messages
    velloran-rig dvr --list-messages --format markdown | string replace -rf '^\| `([A-Z_]+)` \| [^|]+ \| DVR .*' '$1'
end

function __velloran_rig_defects
    velloran-rig dvr --list-defects --format markdown | string replace -rf '^\| `([a-z-]+)[^|]*\|[^|]*\|[^|]*\| ([^|]*) \|.*' '$1\t$2'
end

# Styles, events, habits or weaknesses.
function __velloran_rig_manners --argument-names manners
    echo all
    velloran-rig dvr --list-$manners --format markdown | string replace -rf '^\| `([a-z-]+)[^|]*\| (.*) \|' '$1\t$2'
end

function __velloran_rig_weaknesses
    echo all
    velloran-rig dvr --list-weaknesses --format markdown | string replace -rf '^\| `([a-z0-9-]+)[^|]*\|[^|]*\| ([^|]*) \|.*' '$1\t$2'
end

function __velloran_rig_faults
    velloran-rig proxy --list-faults --format markdown | string replace -rf '^\| `([a-z0-9-]+).*' '$1'
end

function __velloran_rig_fault_choices
    printf '%s\n' quick all
    velloran-rig proxy --list-faults --format markdown | string replace -rf '^\| `[^|]*\| ([a-z]+) .*' '$1' | uniq
    __velloran_rig_faults
end

# What the harness sends.
function __velloran_rig_requests
    echo CALL
    velloran-rig dvr --list-messages --format markdown | string replace -rf '^\| `([A-Z_]+)` \| [^|]+ \| harness .*' '$1' | sort -u
end

function __velloran_rig_cases
    echo all
    velloran-rig run --list-cases | string replace -r '^(\S+) +(.*)' '$1\t$2'
end

# What may follow an option, as arguments of complete; KIND is the value as the help names it.
function __velloran_rig_value --argument-names kind
    switch $kind
        case ''
        case 'all|NAME,*'
            printf '%s\n' -x -a '(__fish_complete_list , __velloran_rig_cases)'
        case 'quick|all|*'
            printf '%s\n' -x -a '(__fish_complete_list , __velloran_rig_fault_choices)'
        case '*|*'
            printf '%s\n' -x -a (string replace -a '|' ' ' -- $kind)
        case 'DIR*'
            printf '%s\n' -x -a '(__fish_complete_directories)'
        case 'FILE*' 'LOG*'
            printf '%s\n' -r -F
        case 'HOST*'
            printf '%s\n' -x -a '(__fish_print_hostnames)'
        case FAULT
            printf '%s\n' -x -a '(__velloran_rig_faults)'
        case REQUEST
            printf '%s\n' -x -a '(__velloran_rig_requests)'
        case NAME
            printf '%s\n' -x -a '(__velloran_rig_defects)'
        case STYLE
            printf '%s\n' -x -a '(__velloran_rig_manners styles)'
        case HABIT
            printf '%s\n' -x -a '(__velloran_rig_manners habits)'
        case WEAKNESS
            printf '%s\n' -x -a '(__velloran_rig_weaknesses)'
        case KIND
            printf '%s\n' -x -a '(__fish_complete_list , "__velloran_rig_manners events")'
        case 'MESSAGE*'
            printf '%s\n' -x -a '(__velloran_rig_messages)'
        case '*'
            printf '%s\n' -x
    end
end

# Declares the options of the subcommand that is given after the condition, or those without one.
function __velloran_rig_declare --argument-names condition
    # A long option stands on a line of its own, before its description.
    set -l help (velloran-rig $argv[2..] --help | string collect)
    for line in (string replace -ra '\n {10,}' '  ' -- $help | string match -r '^  (?:-\w,)?--.*')
        set -l name (string replace -rf '^  (?:-\w,)?--([\w-]+).*' '$1' -- $line)
        set -l kind (string replace -rf '^  \S*--[\w-]+ ([^ =:[]+).*' '$1' -- $line)
        set -l text (string replace -rf '^  \S.*?  +(\S.*)' '$1' -- $line)
        complete -c velloran-rig -n $condition -l $name --description="$text" (__velloran_rig_value "$kind")
    end
end

function __velloran_rig_declare_all
    for line in (velloran-rig --help | string match -r '^  [a-z]+  .*' | string trim)
        set -l subcommand (string split -m 1 ' ' -- $line)
        complete -c velloran-rig -n __fish_use_subcommand -f -a $subcommand[1] \
            --description=(string trim -- $subcommand[2])
        __velloran_rig_declare "__fish_seen_subcommand_from $subcommand[1]" $subcommand[1]
    end
    __velloran_rig_declare __fish_use_subcommand
end
__velloran_rig_declare_all
