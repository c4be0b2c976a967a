# shellcheck shell=bash
for language in en de cs; do
    say "typical_application in the language $language"
    mkdir "$DEMO_WORK/$language"
    show typical_application --language $language --log-dir "$DEMO_WORK/$language" | tee "$DEMO_WORK/shown"
    show cat "$DEMO_WORK/$language"/typical_application*.log
    show cat "$DEMO_WORK/$language/typical_settings.xml"
    case $language in
        en) grep -q '^Storehouse: Welcome!  (Language: en)$' "$DEMO_WORK/shown" ;;
        de) grep -q '^Lagerhaus: Willkommen!  (Sprache: de)$' "$DEMO_WORK/shown" ;;
        cs) grep -q '^Sklad: Vítejte!  (Jazyk: cs)$' "$DEMO_WORK/shown" ;;
    esac
    grep -q 'log.level is 1000 now' "$DEMO_WORK/$language"/typical_application*.log
    grep -q '<Item name="window.width" value="1440"/>' "$DEMO_WORK/$language/typical_settings.xml"
    xmllint --noout "$DEMO_WORK/$language/typical_settings.xml"
done

say "without an option it takes the language of the system, as far as there are texts in it"
show env LANGUAGE= LC_ALL=de_AT.UTF-8 typical_application --log-dir "$DEMO_WORK" >"$DEMO_WORK/shown"
head -2 "$DEMO_WORK/shown"
grep -q '^Lagerhaus: ' "$DEMO_WORK/shown"

say "a file of settings that is broken tells its whole story, on the screen and in the log"
broken=$(dirname "$(command -v typical_application)")/typical_application_files/broken.xml
mkdir "$DEMO_WORK/broken"
code=0
show typical_application --language en --config "$broken" --log-dir "$DEMO_WORK/broken" >"$DEMO_WORK/shown" || code=$?
head -5 "$DEMO_WORK/shown"
show cat "$DEMO_WORK/broken"/typical_application*.log
[[ $code -eq 1 ]]
grep -A2 -F 'qvutils:454: <Item> with empty name.' "$DEMO_WORK/broken"/typical_application*.log |
    grep -A1 -F 'qvutils:434: Filed to read configuration' |
    grep -q 'typical_application.cpp:[0-9]*: The settings of the command line are not complete'
