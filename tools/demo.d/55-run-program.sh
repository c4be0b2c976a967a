# shellcheck shell=bash
say "run_program starts a child and shows what it prints to which stream"
code=0
show run_program sh '-c "echo a line; echo a complaint >&2; exit 3"' >"$DEMO_WORK/shown" || code=$?
cat "$DEMO_WORK/shown"
[[ $code -eq 3 ]]
grep -qx 'out| a line' "$DEMO_WORK/shown"
grep -qx 'err| a complaint' "$DEMO_WORK/shown"

show run_program sh '-c "printf unfinished; printf grief >&2"' >"$DEMO_WORK/shown"
cat "$DEMO_WORK/shown"
grep -qx 'out| unfinished' "$DEMO_WORK/shown"
grep -qx 'err| grief' "$DEMO_WORK/shown"

# Arguments that are not one text are refused, rather than dropped.
code=0
show run_program sh -c "exit 3" 2>"$DEMO_WORK/refused" || code=$?
cat "$DEMO_WORK/refused"
[[ $code -eq 2 ]]
grep -q '^usage: run_program' "$DEMO_WORK/refused"
