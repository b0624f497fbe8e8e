# Gives the headings of a guide the names by which other guides refer to them: surprises.md#numbers is the heading
# "Numbers" of surprises.md.

function label(file, heading) {
    heading = tolower(heading)
    gsub(/[^a-z0-9 -]/, "", heading)
    heading = file "_" heading
    gsub(/[ -]/, "_", heading)
    return heading
}

FNR == 1 {
    file = FILENAME
    gsub(/.*\/|[.]md$/, "", file)
}
/^```/ { code = !code }
!code && /^##+ / {
    heading = $0
    sub(/^##+ /, "", heading)
    $0 = $0 " {#" label(file, heading) "}"
}
!code {
    while (match($0, /\]\([a-z-]+[.]md#[a-z0-9-]+\)/)) {
        target = substr($0, RSTART + 2, RLENGTH - 3)
        split(target, parts, /[.]md#/)
        $0 = substr($0, 1, RSTART - 1) "](@ref " label(parts[1], parts[2]) ")" substr($0, RSTART + RLENGTH)
    }
}
{ print }
