# Completion of ovsel for bash. Made by generate.sh from the tool's own help.
_ovsel()
{
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} command='' words='' i
    if [[ $word == = ]]; then
        word=
    elif [[ $option == = ]] && ((COMP_CWORD > 1)); then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case "$command ${COMP_WORDS[i]}" in
        ' which') command='which' ;;
        ' tree') command='tree' ;;
        ' dirs') command='dirs' ;;
        ' watch') command='watch' ;;
        ' class') command='class' ;;
        ' cache') command='cache' ;;
        'cache write') command='cache write' ;;
        'cache show') command='cache show' ;;
        'cache verify') command='cache verify' ;;
        *' -p' | *' --path' | *' -r' | *' --recursive' | *' --path-file' | *' --cwd' | *' --mount' | *' --cache' | *' --prefix' | *' --ext' | *' --from' | *' --color' | *' --form' | *' --scope' | *' --depth' | *' --interval' | *' --classdef-pattern' | *' --classdef-command') ((++i)); [[ ${COMP_WORDS[i]-} != = ]] || ((++i)) ;;
        esac
    done
    COMPREPLY=()
    case "$command $option" in
    *' -p' | *' --path') mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    *' -r' | *' --recursive') mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    *' --path-file') mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *' --cwd') mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    *' --mount') : ;;
    *' --cache') mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *' --prefix') mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    *' --ext') : ;;
    *' --from') mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *' --color') mapfile -t COMPREPLY < <(compgen -W 'always auto never' -- "$word") ;;
    *' --form') mapfile -t COMPREPLY < <(compgen -W 'native system' -- "$word") ;;
    'which --scope') mapfile -t COMPREPLY < <(compgen -W 'all dir method path private visible' -- "$word") ;;
    'tree --depth') : ;;
    'watch --interval') : ;;
    'class --classdef-pattern') : ;;
    'class --classdef-command') mapfile -t COMPREPLY < <(compgen -c -- "$word") ;;
    'cache write --classdef-pattern') : ;;
    'cache write --classdef-command') mapfile -t COMPREPLY < <(compgen -c -- "$word") ;;
    'cache verify --classdef-pattern') : ;;
    'cache verify --classdef-command') mapfile -t COMPREPLY < <(compgen -c -- "$word") ;;
    *)
        case $command in
        '') words='which tree dirs watch class cache';
            [[ $word != -* ]] || words='-h --help -p --path -r --recursive --path-file --cwd --no-cwd --mount --cache --prefix --ext --from --ignore-case --json -0 --color --form --stats --version' ;;
        'which') words='';
            [[ $word != -* ]] || words='-a --all --dirs --scope' ;;
        'tree') words='';
            [[ $word != -* ]] || words='--depth' ;;
        'dirs') words='';
            [[ $word != -* ]] || words='' ;;
        'watch') words='';
            [[ $word != -* ]] || words='--interval --once' ;;
        'class') words='';
            [[ $word != -* ]] || words='--classdef-pattern --classdef-command' ;;
        'cache') words='write show verify';
            [[ $word != -* ]] || words='' ;;
        'cache write') words='';
            [[ $word != -* ]] || words='--classes --classdef-pattern --classdef-command' ;;
        'cache show') words='';
            [[ $word != -* ]] || words='' ;;
        'cache verify') words='';
            [[ $word != -* ]] || words='--classdef-pattern --classdef-command' ;;
        esac
        [[ $word != -* || -z $command ]] || words+=' -h --help -p --path -r --recursive --path-file --cwd --no-cwd --mount --cache --prefix --ext --from --ignore-case --json -0 --color --form --stats --version'
        case $command in
        'cache write' | 'cache show' | 'cache verify') [[ $word == -* ]] || mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        esac
        [[ -z $words ]] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
        ;;
    esac
}
complete -o filenames -F _ovsel ovsel
