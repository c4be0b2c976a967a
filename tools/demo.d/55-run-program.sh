# shellcheck shell=bash
say "run_program starts a child and shows what it prints to which stream"
code=0
show run_program sh '-c "echo a line; echo a complaint >&2; exit 3"' >"$DEMO_WORK/shown" || code=$?
cat "$DEMO_WORK/shown"
[[ $code -eq 3 ]]
grep -qx 'out| a line' "$DEMO_WORK/shown"
grep -qx 'err| a complaint' "$DEMO_WORK/shown"
