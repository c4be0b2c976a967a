# shellcheck shell=bash
say "json_compact reads what cmake prints of itself, and prints it compact with its keys in order"

echo '$ cmake -E capabilities >capabilities.json'
cmake -E capabilities >"$DEMO_WORK/capabilities.json"
echo '$ json_compact capabilities.json >compact.json'
json_compact "$DEMO_WORK/capabilities.json" >"$DEMO_WORK/compact.json"
echo '$ head -c 300 compact.json'
head -c 300 "$DEMO_WORK/compact.json"
echo ' ...'
show json_compact --stats "$DEMO_WORK/capabilities.json"

python3 - "$DEMO_WORK/capabilities.json" "$DEMO_WORK/compact.json" <<'END'
import json, sys
before, after = (open(name, encoding="utf-8").read() for name in sys.argv[1:])
if json.loads(before) != json.loads(after):
    sys.exit("the compact text means something else")
if after != json.dumps(json.loads(before), sort_keys=True, separators=(",", ":"), ensure_ascii=False) + "\n":
    sys.exit("the compact text is not in order")
print(f"Python's json module agrees: the same document, {len(before)} bytes before and {len(after)} after.")
END

say "a broken document is refused, and the failure record tells the way up"
echo "\$ echo '{\"name\": \"x\", \"ratio\": 1.5}' | json_compact"
code=0
echo '{"name": "x", "ratio": 1.5}' | json_compact || code=$?
echo "exit code $code"
[[ $code -eq 1 ]]

say "a file that is not there is another matter"
code=0
show json_compact "$DEMO_WORK/missing.json" || code=$?
echo "exit code $code"
[[ $code -eq 2 ]]
