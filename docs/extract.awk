# Takes the programs out of a page: NAME_<number>.cpp from each cpp block, which is a program, NAME_<number>.txt from the
# text block below it.
#
#   awk -v folder=FOLDER -v name=NAME -f extract.awk PAGE
/^```/ {
    if (file) close(file)
    file = ""
    if ($0 == "```cpp") file = sprintf("%s/%s_%02d.cpp", folder, name, ++number)
    if ($0 == "```text") file = sprintf("%s/%s_%02d.txt", folder, name, number)
    if (file) printf "" > file
    next
}
file { print > file }
