# Collects the C++ of pages (```cpp blocks) and headers (@code blocks) in one file: each a function of its own,
# over what vocabulary.hpp declares. With `program` set, the one block that is a whole program, as it stands.

function begin() { inside = 1; text = "#line " (FNR + 1) " \"" FILENAME "\"\n"; isProgram = 0 }
function end() {
    inside = 0
    if (isProgram) programs = programs text
    else bodies[++count] = text
}
function add(line) {
    # Seen inside a function, an include would be a nested one.
    if (line ~ /^#include/) {
        if (program) text = text line "\n"
        else { includes = includes line "\n"; text = text "\n" }
        return
    }
    if (line ~ /^int main\(/) isProgram = 1
    text = text line "\n"
}

FNR == 1 { isPage = FILENAME ~ /\.md$/; inside = 0 }
isPage && /^```cpp/ { begin(); next }
isPage && /^```/ { if (inside) end(); next }
!isPage && /\/\/\/ @code/ { begin(); next }
!isPage && /\/\/\/ @endcode/ { end(); next }
inside { if (!isPage) sub(/^ *\/\/\/ ?/, ""); add($0) }

END {
    if (program) {
        printf "%s", programs
        exit programs == ""
    }
    printf "%s#include \"vocabulary.hpp\"\n", includes
    for (i = 1; i <= count; ++i)
        printf "namespace reader {\nvoid Example%d() {\n%s}\n}\n", i, bodies[i]
    exit count == 0
}
