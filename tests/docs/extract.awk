# Takes the examples out of a Markdown file: awk -v stem=PREFIX -f extract.awk FILE
#
# An example is a block marked "cpp"; what it prints is the block marked "text" that comes next. One with a main is
# a program: PREFIX_1.cpp and PREFIX_1.txt, PREFIX_2.cpp … Those without one are fragments, which become the
# functions of one program, PREFIX_fragments. The stems of the programs go to standard output.

function fail(line, message) {
    printf "%s:%d: %s\n", FILENAME, line, message > "/dev/stderr"
    failed = 1
    exit 1
}

function finish(output) {
    if (code == "")
        return
    if (code ~ /(^|\n)int main\(/) {
        if (output == "")
            fail(begin, "a program whose output is not shown")
        name = stem "_" ++programs
        printf "#line %d \"%s\"\n%s", begin + 1, FILENAME, code > (name ".cpp")
        printf "%s", output > (name ".txt")
        close(name ".cpp")
        close(name ".txt")
        print name
    } else {
        functions = functions sprintf("\nstatic void fragment%d() {\n#line %d \"%s\"\n%s}\n", begin, begin + 1, FILENAME, code)
        calls = calls sprintf("    std::cout << \"-- line %d\\n\";\n    fragment%d();\n", begin, begin)
        printed = printed sprintf("-- line %d\n%s", begin, output)
    }
    code = ""
}

/^```/ && language == "" {
    language = substr($0, 4)
    if (language == "")
        fail(FNR, "a block without a language")
    if (language != "text")
        finish("")
    if (language == "cpp")
        begin = FNR
    text = ""
    next
}
/^```/ {
    if (language == "cpp")
        code = text
    else if (language == "text")
        finish(text)
    language = ""
    next
}
{ text = text $0 "\n" }

END {
    if (failed)
        exit 1
    if (language != "")
        fail(FNR, "a block without an end")
    finish("")
    if (functions != "") {
        name = stem "_fragments"
        printf "#include <iostream>\n#include <orvabase/orvabase.h>\n%s\nint main() {\n%s}\n", functions, calls > (name ".cpp")
        printf "%s", printed > (name ".txt")
        print name
    }
}
