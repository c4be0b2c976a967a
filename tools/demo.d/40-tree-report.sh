# shellcheck shell=bash
say "tree_report walks this repository: size, time and MD5 digest of every file"
echo "\$ tree_report . report.json | tail"
tree_report . "$DEMO_WORK/report.json" >"$DEMO_WORK/report.txt" || [[ $? -eq 1 ]]
tail "$DEMO_WORK/report.txt"

python3 - "$DEMO_WORK/report.json" >"$DEMO_WORK/digests.txt" <<'END'
import json, sys
for file in json.load(open(sys.argv[1], encoding="utf-8"))["files"]:
    print(f"{file['md5']}  {file['path']}")
END
md5sum --check --quiet "$DEMO_WORK/digests.txt"
files=$(find . -type f | wc -l)
reported=$(wc -l <"$DEMO_WORK/digests.txt")
echo "md5sum agrees with all $reported digests; find counts $files files."
[[ $reported -eq $files ]]

say "a file that cannot be read is named at the end, and the others are reported"
mkdir "$DEMO_WORK/tree"
echo "here" >"$DEMO_WORK/tree/here.txt"
mkfifo "$DEMO_WORK/tree/pipe"
code=0
show tree_report "$DEMO_WORK/tree" || code=$?
echo "exit code $code"
[[ $code -eq 1 ]]
