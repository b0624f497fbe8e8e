# Shows doxygen the headers as a reader sees them.
#
# One comment in a header is meant for all declarations below it, up to the next comment or blank line: each of them
# gets a copy. Members that explain themselves (copying, destruction, the constructors of exceptions) need no comment
# there and get a sentence here, or are left out.

function emit(comment, line,    i, lines, count) {
    count = split(comment, lines, "\n")
    for (i = 1; i < count; i++)
        print lines[i]
    print line
}

# What is said about a declaration that has no comment of its own: "-" is nothing at all, it is left out.
function standard(text, class) {
    if (text ~ "^ *" class "[(][)] = delete")
        return "Not available: there are no objects of this class."
    if (text ~ /= delete/)
        return "Not available: objects of this class cannot be copied."
    if (text ~ "~" class || text ~ "^ *" class "[(]const " class "&" || text ~ "operator=[(]const " class "&")
        return "-"
    if (text ~ "[( =]" class "[(]" class "&&" || text ~ "operator=[(]" class "&&")
        return "Takes what `other` holds."
    if (text ~ "^ *(explicit )?OX[A-Za-z_0-9]*[(]")
        return access == "protected" ? "-" : "Keeps the arguments as details, beside the class name and the message."
    if (text ~ /operator(==|!=|<=|>=|<|>)[(]/)
        return "What `compare` says."
    return ""
}

# Follows a declaration to its end.
function follow(text,    opened, closed) {
    sub(/ *\/\/.*/, "", text)
    opened = gsub(/[{]/, "{", text)
    closed = gsub(/[}]/, "}", text)
    depth += opened - closed
    open = depth > 0 || text !~ /[;}]$/
}

{
    gsub(/ORVABASE_EXPORT /, "")
    gsub(/ORVABASE_DIRECT /, "")
    gsub(/\[\[gnu::noinline\]\] /, "")
}

# Inside a declaration of more than one line.
open {
    print hidden ? "" : $0
    follow($0)
    next
}

/^(class|struct) .*[{]$/ {
    class = $2
    access = $1 == "class" ? "private" : "public"
    pending = shared = ""
    print
    next
}
/^};/ { class = "" }
/^(public|protected|private):/ {
    access = substr($1, 1, length($1) - 1)
    pending = shared = ""
    print
    next
}

class != "" && access == "private" {
    print ""
    next
}

/^ *\/\/\// {
    if (pending == "" && shared != "")
        shared = ""
    pending = pending $0 "\n"
    print
    if (/@\{/) { # the comment of a group counts for its first members, too
        print ""
        shared = pending
        gsub(/ *\/\/\/ @\{\n/, "", shared)
        sub(/@name /, "", shared)
        pending = ""
    } else if (/@\}/)
        pending = shared = ""
    next
}

# The beginning of a declaration: of a member, or of a function outside of classes.
(class != "" && /^    [^ }#\/]/ && !/^    (friend|using|typedef|enum|struct|class) /) ||
(class == "" && /^[^ }#\/]/ && /[(]/ && !/^(namespace|enum|using|template|extern)/) {
    indent = class == "" ? "" : "    "
    if (/[&*]$/) { # the result stands on a line of its own
        first = $0
        getline
        $0 = first "\n" $0
    }
    hidden = 0
    if (/\/\/\/</) {
        shared = ""
        print
    } else if (pending != "") {
        shared = pending
        print
    } else if ((comment = standard($0, class)) != "") {
        shared = ""
        hidden = comment == "-"
        emit(hidden ? "" : indent "/// " comment "\n", hidden ? "" : $0)
    } else {
        if (shared != "" && report)
            print shared FILENAME ": " $0 > "/dev/stderr"
        emit(shared, $0)
    }
    pending = ""
    depth = 0
    follow($0)
    next
}

{
    if (!/^ *(#|$)/ || /^$/)
        pending = shared = ""
    print
}
