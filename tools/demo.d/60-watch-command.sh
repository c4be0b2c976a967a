# shellcheck shell=bash
say "watch_command runs a program and keeps every line that it prints, with its stream"
cat >"$DEMO_WORK/speaks" <<'END'
#!/bin/sh
echo "first line"
echo "a complaint" >&2
printf 'no line end'
exit 7
END
chmod +x "$DEMO_WORK/speaks"
cd "$DEMO_WORK"
code=0
show watch_command ./speaks || code=$?
echo "exit code $code"
[[ $code -eq 7 ]]
show cat watch_command*.log
for line in "output: first line" "errors: a complaint" "output: no line end" "ended with exit code 7"; do
    grep -qF "$line" watch_command*.log
done

say "and on a real program with a lot to say: $(wc -l <watch_command*.log) lines so far"
rm watch_command*.log
code=0
show watch_command find /usr -maxdepth 3 || code=$?
echo "exit code $code"
[[ $(find /usr -maxdepth 3 | wc -l) -eq $(grep -c "output: /" watch_command*.log) ]]
echo "find says $(grep -c "output: /" watch_command*.log) lines, and so does the log."

say "an interrupt ends what is shown, while the program goes on and is logged to its end"
rm watch_command*.log
# In a process group of its own, all of which gets the interrupt, as all of a terminal's foreground does.
set -m
watch_command sh -c 'echo begins; sleep 2; echo ends; exit 3' 2>"$DEMO_WORK/shown" &
watcher=$!
set +m
until grep -qs "output: begins" watch_command*.log; do sleep 0.1; done
kill -INT -- -$watcher
code=0
wait $watcher || code=$?
cat "$DEMO_WORK/shown"
echo "exit code $code"
[[ $code -eq 3 ]]
grep -F "output: ends" watch_command*.log
