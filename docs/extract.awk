# Takes the programs of the guide out of it: <number>.cpp from each cpp block that is a program, <number>.txt from the
# text block beside it.
#
#   awk -v folder=FOLDER -f extract.awk guide.md
/^```/ {
    if (file) close(file)
    file = ""
    if ($0 == "```cpp") file = sprintf("%s/recipe_%02d.cpp", folder, ++number)
    if ($0 == "```text") file = sprintf("%s/recipe_%02d.txt", folder, number)
    if (file) printf "" > file
    next
}
file { print > file }
