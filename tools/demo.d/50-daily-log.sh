# shellcheck shell=bash
say "daily_log logs from several threads to the file of the day"
mkdir "$DEMO_WORK/logs"
show daily_log "$DEMO_WORK/logs"
show daily_log "$DEMO_WORK/logs"
file=$(echo "$DEMO_WORK"/logs/cabinet*.log)
show cat "$file"
[[ ${file##*/} == cabinet$(date +%Y%m%d).log ]]
[[ $(grep -c '^Logging started - ' "$file") -eq 2 ]]
[[ $(grep -c 'examples/daily_log.cpp:[0-9]*: The drawer is stuck$' "$file") -eq 4 ]]
[[ $(grep -c ': Opened drawer [1-4]$' "$file") -eq 8 ]]
