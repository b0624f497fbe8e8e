# Prints the first block of a Markdown file that is marked with -v language=…
/^```/ && inside { exit }
inside { print }
$0 == "```" language { inside = 1 }
