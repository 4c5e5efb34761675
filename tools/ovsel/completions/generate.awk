# Turns the table of generate.sh into one completion file; `form` is bash, zsh or fish.
# An option of the tool itself holds for every command, so a command lists only what it has besides.

function quoted(s) { gsub(/'/, "'\\''", s); return "'" s "'" }
function choices(argument) { gsub(/\|/, " ", argument); return argument }
function names(i) { return short[i] (short[i] != "" && long[i] != "" ? " " : "") long[i] }
function values_of(argument) {
    if (argument == "") return ""
    if (argument == "DIR") return "folders"
    if (argument == "FILE") return "files"
    if (argument == "CMD") return "programs"
    return argument ~ /^[a-z|]+$/ ? "words" : "text"
}

{
    if ($1 == "o" && $2 != "" && ($3 "," $4) in common) next
    if ($1 == "o" && $2 == "") common[$3 "," $4]
    ++n
    kind[n] = $1; command[n] = $2; short[n] = $3; long[n] = $4; argument[n] = $5
    repeats[n] = $6 ~ /^\*/; summary[n] = $6
    sub(/^\*/, "", summary[n])
    values[n] = values_of($5)
    if ($1 == "c") {
        parent[++commands] = $2
        leaf[commands] = $4
        path[commands] = ($2 == "" ? "" : $2 " ") $4
        about[commands] = summary[n]
        children[$2] = children[$2] (children[$2] == "" ? "" : " ") $4
    }
    if ($1 == "p") positional[$2] = $4
}

END {
    if (form == "bash") bash()
    else if (form == "zsh") zsh()
    else if (form == "fish") fish()
}

# --- bash: words are split at `=`, and the value of an option stands behind it in either case.

function bash_options(of,   i, list) {
    for (i = 1; i <= n; ++i)
        if (kind[i] == "o" && command[i] == of)
            list = list (list == "" ? "" : " ") names(i)
    return list
}

function bash(   i, list, seen) {
    print "# Completion of ovsel for bash. Made by generate.sh from the tool's own help."
    print "_ovsel()"
    print "{"
    print "    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} command='' words='' i"
    print "    if [[ $word == = ]]; then"
    print "        word="
    print "    elif [[ $option == = ]] && ((COMP_CWORD > 1)); then"
    print "        option=${COMP_WORDS[COMP_CWORD - 2]}"
    print "    fi"
    print "    for ((i = 1; i < COMP_CWORD; ++i)); do"
    print "        case \"$command ${COMP_WORDS[i]}\" in"
    for (i = 1; i <= commands; ++i)
        print "        '" parent[i] " " leaf[i] "') command=" quoted(path[i]) " ;;"
    for (i = 1; i <= n; ++i)
        if (values[i] != "" && !(names(i) in seen)) {
            seen[names(i)]
            list = list (list == "" ? "" : " | ") bash_patterns(i, "*' ")
        }
    print "        " list ") ((++i)); [[ ${COMP_WORDS[i]-} != = ]] || ((++i)) ;;"
    print "        esac"
    print "    done"
    print "    COMPREPLY=()"
    print "    case \"$command $option\" in"
    for (i = 1; i <= n; ++i)
        if (values[i] != "")
            print "    " bash_patterns(i, command[i] == "" ? "*' " : "'" command[i] " ") ") " bash_values(i) " ;;"
    print "    *)"
    print "        case $command in"
    for (i = 0; i <= commands; ++i) {
        print "        " quoted(path[i]) ") words=" quoted(children[path[i]]) ";"
        print "            [[ $word != -* ]] || words=" quoted(bash_options(path[i])) " ;;"
    }
    print "        esac"
    print "        [[ $word != -* || -z $command ]] || words+=' " bash_options("") "'"
    list = ""
    for (i = 1; i <= commands; ++i)
        if (positional[path[i]] == "FILE")
            list = list (list == "" ? "" : " | ") quoted(path[i])
    if (list != "") {
        print "        case $command in"
        print "        " list ") [[ $word == -* ]] || mapfile -t COMPREPLY < <(compgen -f -- \"$word\") ;;"
        print "        esac"
    }
    print "        [[ -z $words ]] || mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")"
    print "        ;;"
    print "    esac"
    print "}"
    print "complete -o filenames -F _ovsel ovsel"
}

function bash_patterns(i, before,   text) {
    text = short[i] == "" ? "" : before short[i] "'"
    return long[i] == "" ? text : text (text == "" ? "" : " | ") before long[i] "'"
}
function bash_values(i) {
    if (values[i] == "folders") return "mapfile -t COMPREPLY < <(compgen -d -- \"$word\")"
    if (values[i] == "files") return "mapfile -t COMPREPLY < <(compgen -f -- \"$word\")"
    if (values[i] == "programs") return "mapfile -t COMPREPLY < <(compgen -c -- \"$word\")"
    if (values[i] == "words") return "mapfile -t COMPREPLY < <(compgen -W '" choices(argument[i]) "' -- \"$word\")"
    return ":"
}

# --- zsh: one function for each command, the tool's own options in an array.

function zsh_text(s) { gsub(/\[/, "\\[", s); gsub(/\]/, "\\]", s); gsub(/:/, "\\:", s); return s }
function zsh_values(i) {
    if (values[i] == "") return ""
    if (values[i] == "folders") return ":folder:_files -/"
    if (values[i] == "files") return ":file:_files"
    if (values[i] == "programs") return ":program:_command_names"
    if (values[i] == "words") return ":word:(" choices(argument[i]) ")"
    return ":" tolower(zsh_text(argument[i])) ": "
}
function zsh_option(i,   head, tail) {
    tail = "[" zsh_text(summary[i]) "]" zsh_values(i)
    if (short[i] == "" || long[i] == "")
        return quoted((repeats[i] ? "*" : "") short[i] long[i] tail)
    head = repeats[i] ? "'*'" : quoted("(" short[i] " " long[i] ")")
    return head "{" short[i] "," long[i] "}" quoted(tail)
}
function zsh_function(of,   i) { i = of; gsub(/ /, "_", i); return i == "" ? "_ovsel" : "_ovsel_" i }
function zsh_command(of,   i) {
    print zsh_function(of) "() {"
    if (children[of] != "") print "    local curcontext=$curcontext state line"
    if (of == "") {
        print "    local -A opt_args"
        print "    local -a ovsel_options=("
        for (i = 1; i <= n; ++i)
            if (kind[i] == "o" && command[i] == "") print "        " zsh_option(i)
        print "    )"
    }
    print "    _arguments -s " (children[of] != "" ? "-C " : "") "$ovsel_options \\"
    for (i = 1; i <= n; ++i)
        if (of != "" && kind[i] == "o" && command[i] == of) print "        " zsh_option(i) " \\"
    if (children[of] != "")
        print "        '1:command:->command' '*::argument:->argument'"
    else if (of in positional)
        print "        '*:" tolower(positional[of]) ":" (positional[of] == "FILE" ? "_files" : " ") "'"
    else
        print "        ':: :'"
    if (children[of] != "") {
        print "    case $state in"
        print "    command)"
        print "        local -a commands=("
        for (i = 1; i <= commands; ++i)
            if (parent[i] == of) print "            " quoted(leaf[i] ":" about[i])
        print "        )"
        print "        _describe command commands ;;"
        print "    argument)"
        print "        (($+functions[" zsh_function(of) "_$line[1]])) && " zsh_function(of) "_$line[1] ;;"
        print "    esac"
    }
    print "}"
    print ""
}
function zsh(   i) {
    print "#compdef ovsel"
    print "# Completion of ovsel for zsh. Made by generate.sh from the tool's own help."
    print ""
    for (i = commands; i > 0; --i) zsh_command(path[i])
    zsh_command("")
    print "_ovsel \"$@\""
}

# --- fish: a line for each option.

function fish_condition(of,   part, count, i, text) {
    count = split(of, part, " ")
    for (i = 1; i <= count; ++i)
        text = text (i > 1 ? "; and " : "") "__fish_seen_subcommand_from " part[i]
    return text
}
function fish_values(i) {
    if (values[i] == "") return ""
    if (values[i] == "folders") return " -x -a '(__fish_complete_directories (commandline -ct))'"
    if (values[i] == "files") return " -r -F"
    if (values[i] == "programs") return " -x -a '(__fish_complete_command)'"
    if (values[i] == "words") return " -x -a '" choices(argument[i]) "'"
    return " -x"
}
function fish(   i, line, condition) {
    print "# Completion of ovsel for fish. Made by generate.sh from the tool's own help."
    print "complete -c ovsel -f"
    for (i = 1; i <= commands; ++i) {
        condition = "__fish_use_subcommand"
        if (parent[i] != "")
            condition = fish_condition(parent[i]) "; and not __fish_seen_subcommand_from " children[parent[i]]
        print "complete -c ovsel -n " quoted(condition) " -a " leaf[i] " -d " quoted(about[i])
    }
    for (i = 1; i <= n; ++i) {
        line = "complete -c ovsel"
        if (command[i] != "") line = line " -n " quoted(fish_condition(command[i]))
        if (kind[i] == "p" && argument[i] == "" && long[i] == "FILE")
            print line " -F"
        if (kind[i] != "o") continue
        if (short[i] != "") line = line " -s " substr(short[i], 2)
        if (long[i] != "") line = line " -l " substr(long[i], 3)
        print line fish_values(i) " -d " quoted(summary[i])
    }
}
